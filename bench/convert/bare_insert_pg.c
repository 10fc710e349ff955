/* The least an insert with one round trip per record can cost on
 * PostgreSQL: the rows of a ";"-separated file (header skipped) go into a
 * table of text columns through libpq, one prepared INSERT executed and
 * answered per row (as a refusal must be known before the next record),
 * committed every 10,000 rows. No conversion, no types: the peer that shows
 * what the round trips alone cost on a machine.
 *   bare_insert_pg CONNINFO TABLE FILE
 */
#include <libpq-fe.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { kColumns = 10, kGroup = 10000 };

static void Check(PGconn* c, PGresult* r, ExecStatusType want) {
  if (PQresultStatus(r) != want) {
    fprintf(stderr, "bare_insert_pg: %s", PQerrorMessage(c));
    exit(1);
  }
  PQclear(r);
}

int main(int argc, char** argv) {
  if (argc != 4) {
    fprintf(stderr, "usage: bare_insert_pg CONNINFO TABLE FILE\n");
    return 2;
  }
  PGconn* c = PQconnectdb(argv[1]);
  if (PQstatus(c) != CONNECTION_OK) {
    fprintf(stderr, "bare_insert_pg: %s", PQerrorMessage(c));
    return 1;
  }
  FILE* in = fopen(argv[3], "r");
  if (!in) {
    perror(argv[3]);
    return 1;
  }
  char sql[256];
  snprintf(sql, sizeof sql, "INSERT INTO %s VALUES ($1, $2, $3, $4, $5, $6, $7, $8, $9, $10)",
           argv[2]);
  Check(c, PQprepare(c, "row", sql, kColumns, NULL), PGRES_COMMAND_OK);
  Check(c, PQexec(c, "BEGIN"), PGRES_COMMAND_OK);
  char line[4096];
  long rows = 0;
  int header = 1;
  while (fgets(line, sizeof line, in)) {
    if (header) {
      header = 0;
      continue;
    }
    line[strcspn(line, "\r\n")] = '\0';
    const char* values[kColumns] = {0};
    char* field = line;
    for (int i = 0; i < kColumns && field; ++i) {
      values[i] = field;
      field = strchr(field, ';');
      if (field) *field++ = '\0';
    }
    Check(c, PQexecPrepared(c, "row", kColumns, values, NULL, NULL, 0), PGRES_COMMAND_OK);
    if (++rows % kGroup == 0) {
      Check(c, PQexec(c, "COMMIT"), PGRES_COMMAND_OK);
      Check(c, PQexec(c, "BEGIN"), PGRES_COMMAND_OK);
    }
  }
  Check(c, PQexec(c, "COMMIT"), PGRES_COMMAND_OK);
  fclose(in);
  PQfinish(c);
  printf("%ld\n", rows);
  return 0;
}
