// Writes and reads Paradox tables with pxlib, an independent implementation
// of the file format, for the Paradox tests.
//
//   px_tool fixture DIR   writes DIR/kunden.db (+ .mb) with every field type
//                         and DIR/viele.db with 200 records over 8 blocks
//   px_tool dump FILE.db  prints the header's counts and every record, one
//                         line each, fields by "|", text in UTF-8
//
// pxlib neither converts text on writing nor reads .MB files back here, so
// the fixture's text is given in code page 1252 and dump shows BLObs that
// lie in the .MB file as empty.
#include <iconv.h>
#include <paradox.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int quiet = 0;  // dump: a BLOb in the .MB file is shown empty, unremarked

static void Fail(pxdoc_t* p, int type, const char* msg, void* data) {
  (void)p, (void)type, (void)data;
  if (!quiet) fprintf(stderr, "pxlib: %s\n", msg);
}

static pxdoc_t* NewDoc(void) {
  pxdoc_t* doc = PX_new2(Fail, NULL, NULL, NULL);
  if (!doc) exit(2);
  return doc;
}

static void Field(pxdoc_t* doc, pxfield_t* f, const char* name, char type, int len, int dc) {
  f->px_fname = PX_strdup(doc, name);
  f->px_ftype = type;
  f->px_flen = len;
  f->px_fdc = dc;
}

static int Fixture(const char* dir) {
  char path[4096], mb[4096];
  snprintf(path, sizeof path, "%s/kunden.db", dir);
  snprintf(mb, sizeof mb, "%s/kunden.mb", dir);
  pxdoc_t* doc = NewDoc();
  enum { kFields = 14 };
  pxfield_t* f = (pxfield_t*)doc->malloc(doc, kFields * sizeof(pxfield_t), "fields");
  Field(doc, &f[0], "Nr", pxfAutoInc, 4, 0);
  Field(doc, &f[1], "Name", pxfAlpha, 20, 0);
  Field(doc, &f[2], "Geboren", pxfDate, 4, 0);
  Field(doc, &f[3], "Anzahl", pxfShort, 2, 0);
  Field(doc, &f[4], "Menge", pxfLong, 4, 0);
  Field(doc, &f[5], "Preis", pxfCurrency, 8, 0);
  Field(doc, &f[6], "Wert", pxfNumber, 8, 0);
  Field(doc, &f[7], "Aktiv", pxfLogical, 1, 0);
  Field(doc, &f[8], "Notiz", pxfMemoBLOb, 20, 0);
  Field(doc, &f[9], "Bild", pxfBLOb, 10, 0);
  Field(doc, &f[10], "Zeit", pxfTime, 4, 0);
  Field(doc, &f[11], "Stempel", pxfTimestamp, 8, 0);
  Field(doc, &f[12], "Betrag", pxfBCD, 17, 2);
  Field(doc, &f[13], "Kennung", pxfBytes, 4, 0);
  FILE* fp = fopen(path, "w+");
  if (!fp || PX_create_fp(doc, f, kFields, fp, pxfFileTypNonIndexDB) < 0) return 1;
  PX_set_tablename(doc, "kunden");
  PX_set_value(doc, "codepage", 1252);
  if (PX_set_blob_file(doc, mb) < 0) return 1;
  int size = PX_get_recordsize(doc);
  char* rec = (char*)malloc((size_t)size);
  int offsets[kFields], o = 0;
  for (int i = 0; i < kFields; ++i) offsets[i] = o, o += f[i].px_flen;

  // Record 1: every field set.
  memset(rec, 0, (size_t)size);
  PX_put_data_long(doc, rec + offsets[0], 4, 1);
  PX_put_data_alpha(doc, rec + offsets[1], 20, "M\xfcller");
  PX_put_data_long(doc, rec + offsets[2], 4, PX_make_date(doc, 1970, 5, 17)->value.lval);
  PX_put_data_short(doc, rec + offsets[3], 2, -12);
  PX_put_data_long(doc, rec + offsets[4], 4, 123456);
  PX_put_data_double(doc, rec + offsets[5], 8, 19.99);
  PX_put_data_double(doc, rec + offsets[6], 8, -0.5);
  PX_put_data_byte(doc, rec + offsets[7], 1, 1);
  char memo[200];
  strcpy(memo,
         "Eine lange Notiz, die nicht in den Datensatz passt: Gr\xfc\xdf"
         "e aus K\xf6ln.");
  PX_put_data_blob(doc, rec + offsets[8], 20, memo, (int)strlen(memo));
  char bin[300];
  for (int i = 0; i < 300; ++i) bin[i] = (char)(i * 7);
  PX_put_data_blob(doc, rec + offsets[9], 10, bin, 300);
  PX_put_data_long(doc, rec + offsets[10], 4, PX_make_time(doc, 13, 45, 30)->value.lval);
  PX_put_data_double(doc, rec + offsets[11], 8,
                     PX_make_timestamp(doc, 2001, 2, 3, 4, 5, 6)->value.dval);
  PX_put_data_bcd(doc, rec + offsets[12], 2, "-1234.56");
  PX_put_data_bytes(doc, rec + offsets[13], 4, "\x01\x02\x03\xff");
  if (PX_put_record(doc, rec) < 0) return 1;

  // Record 2: only the counter, everything else Null.
  memset(rec, 0, (size_t)size);
  PX_put_data_long(doc, rec + offsets[0], 4, 2);
  if (PX_put_record(doc, rec) < 0) return 1;

  // Record 3: edges — negatives, a memo that fits the record, a date before 1899.
  memset(rec, 0, (size_t)size);
  PX_put_data_long(doc, rec + offsets[0], 4, 3);
  PX_put_data_alpha(doc, rec + offsets[1], 20, "Z");
  PX_put_data_long(doc, rec + offsets[2], 4, PX_make_date(doc, 1800, 2, 28)->value.lval);
  PX_put_data_short(doc, rec + offsets[3], 2, 0);
  PX_put_data_long(doc, rec + offsets[4], 4, -2147483647);
  PX_put_data_double(doc, rec + offsets[5], 8, -0.01);
  PX_put_data_double(doc, rec + offsets[6], 8, 1e100);
  PX_put_data_byte(doc, rec + offsets[7], 1, 0);
  strcpy(memo, "kurz");
  PX_put_data_blob(doc, rec + offsets[8], 20, memo, (int)strlen(memo));
  PX_put_data_long(doc, rec + offsets[10], 4, 0);
  PX_put_data_bcd(doc, rec + offsets[12], 2, "7.5");
  if (PX_put_record(doc, rec) < 0) return 1;
  free(rec);
  PX_close(doc);
  fclose(fp);

  // 200 records of 14 bytes in 2 KB blocks: 145 to a block, two blocks.
  snprintf(path, sizeof path, "%s/viele.db", dir);
  doc = NewDoc();
  f = (pxfield_t*)doc->malloc(doc, 2 * sizeof(pxfield_t), "fields");
  Field(doc, &f[0], "Nr", pxfLong, 4, 0);
  Field(doc, &f[1], "Text", pxfAlpha, 10, 0);
  fp = fopen(path, "w+");
  if (!fp || PX_create_fp(doc, f, 2, fp, pxfFileTypNonIndexDB) < 0) return 1;
  PX_set_tablename(doc, "viele");
  char small[14], text[16];
  for (int i = 1; i <= 200; ++i) {
    memset(small, 0, sizeof small);
    PX_put_data_long(doc, small, 4, i);
    snprintf(text, sizeof text, "Satz %d", i);
    PX_put_data_alpha(doc, small + 4, 10, text);
    if (PX_put_record(doc, small) < 0) return 1;
  }
  PX_close(doc);
  fclose(fp);
  return 0;
}

// Prints text of the file's code page as UTF-8.
static void PrintText(const char* codepage, const char* text, size_t len) {
  iconv_t cd = iconv_open("UTF-8", codepage);
  char out[4096];
  char* in = (char*)text;
  char* o = out;
  size_t left = sizeof out;
  if (cd == (iconv_t)-1 || iconv(cd, &in, &len, &o, &left) == (size_t)-1) {
    fputs("<?>", stdout);
  } else {
    fwrite(out, 1, sizeof out - left, stdout);
  }
  if (cd != (iconv_t)-1) iconv_close(cd);
}

static int Dump(const char* path) {
  quiet = 1;
  pxdoc_t* doc = NewDoc();
  if (PX_open_file(doc, path) < 0) return 1;
  int n = PX_get_num_records(doc), fields = PX_get_num_fields(doc);
  pxfield_t* f = PX_get_fields(doc);
  float codepage = 0;
  PX_get_value(doc, "codepage", &codepage);
  char cp[16];
  snprintf(cp, sizeof cp, "CP%d", (int)codepage);
  printf("records %d, fields %d, blocks %d\n", n, fields, (int)doc->px_head->px_fileblocks);
  for (int r = 0; r < n; ++r) {
    pxval_t** vals = PX_retrieve_record(doc, r);
    if (!vals) return 1;
    for (int i = 0; i < fields; ++i) {
      if (i > 0) putchar('|');
      pxval_t* v = vals[i];
      if (v->isnull) {
        fputs("Null", stdout);
        continue;
      }
      switch (f[i].px_ftype) {
        case pxfBCD:
          printf("%s", v->value.str.val);
          break;
        case pxfAlpha:
          PrintText(cp, v->value.str.val, strlen(v->value.str.val));
          break;
        case pxfMemoBLOb:
        case pxfFmtMemoBLOb:
          PrintText(cp, v->value.str.val, (size_t)v->value.str.len);
          break;
        case pxfBLOb:
        case pxfOLE:
        case pxfGraphic:
        case pxfBytes:
          printf("%d bytes", v->value.str.len);
          break;
        case pxfCurrency:
        case pxfNumber:
        case pxfTimestamp:
          printf("%.15g", v->value.dval);
          break;
        default:
          printf("%ld", v->value.lval);
      }
    }
    putchar('\n');
  }
  PX_close(doc);
  return 0;
}

int main(int argc, char** argv) {
  PX_boot();
  if (argc >= 3 && strcmp(argv[1], "fixture") == 0) return Fixture(argv[2]);
  if (argc >= 3 && strcmp(argv[1], "dump") == 0) return Dump(argv[2]);
  fprintf(stderr, "px_tool fixture DIR | dump FILE.db\n");
  return 2;
}
