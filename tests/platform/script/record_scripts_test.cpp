// Conversion scripts on real record sets: a SQLite file through the SQLite3
// ODBC driver, the source read forward-only, the target written in a batch,
// in both languages through the script control, as a job runs them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "platform/script/binding.h"
#include "platform/script/script_control.h"

namespace ketrova::script {
namespace {

namespace fs = std::filesystem;

class RecordScripts : public ::testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "ketrova-records-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    db_ = std::make_shared<ado::Connection>();
    db_->Open("Driver={SQLite3};Database=" + (folder_ / "test.db").string());
    db_->Execute("CREATE TABLE Kunden (ID INTEGER PRIMARY KEY, Name VARCHAR(40), Ort VARCHAR(40))");
    db_->Execute("INSERT INTO Kunden VALUES (1, 'Müller-Lüdenscheidt', 'Köln')");
    db_->Execute("INSERT INTO Kunden VALUES (2, 'Ökonom', NULL)");
    db_->Execute("CREATE TABLE Ziel (Nr INTEGER PRIMARY KEY, Name VARCHAR(5), Ort VARCHAR(40))");
    control_.SetLanguage(GetParam());
  }
  void TearDown() override {
    db_->Close();
    fs::remove_all(folder_);
  }
  bool VB() const { return GetParam() == "VBScript"; }

  // The job's loop: per source record AddNew, txConvertMain, Update.
  void Convert(const std::string& script) {
    auto source = std::make_shared<ado::Recordset>();
    source->Open("SELECT ID, Name, Ort FROM Kunden ORDER BY ID", Variant(ObjectPtr(db_)));
    auto target = std::make_shared<ado::Recordset>();
    target->Open("SELECT * FROM Ziel", Variant(ObjectPtr(db_)), ado::adOpenKeyset,
                 ado::adLockBatchOptimistic);
    control_.AddObject("Source", source, true);
    control_.AddObject("Destination", target, true);
    control_.AddObject("SourceConnection", db_, true);
    control_.Modules().Add("zsModuleConvertMain").AddCode(script);
    ProcedureHandle main = control_.FindProcedure("zsModuleConvertMain", "txConvertMain");
    ASSERT_NE(main, nullptr);
    for (; !source->Eof(); source->MoveNext()) {
      target->AddNew();
      control_.Call(main, {});
      target->Update();
    }
    target->UpdateBatch();
    target->Close();
    source->Close();
  }
  std::string Rows() {
    auto rs = db_->Execute("SELECT Nr, Name, Ort FROM Ziel ORDER BY Nr");
    std::string out;
    for (; !rs->Eof(); rs->MoveNext())
      for (const auto& f : rs->GetFields())
        out += (f->Value().IsNull() ? "Null" : f->Value().ToText()) +
               (f->Name() == "Ort" ? "\n" : ";");
    return out;
  }

  fs::path folder_;
  ado::ConnectionPtr db_;
  ScriptControl control_;
};

// The generated script: VBScript cuts text to the target's size, JScript
// never does (and its uncut lines carry two semicolons).
TEST_P(RecordScripts, GeneratedScriptCopiesTheRecords) {
  Convert(VB() ? "Function txConvertMain()\r\n"
                 "\tDestination.Fields(\"Nr\") = Source.Fields(\"ID\")\r\n"
                 "\tDestination.Fields(\"Name\") = Left(Source.Fields(\"Name\"),5)\r\n"
                 "\tDestination.Fields(\"Ort\") = Left(Source.Fields(\"Ort\"),40)\r\n"
                 "End Function\r\n"
               : "function txConvertMain()\r\n{\r\n"
                 "\tDestination.Fields(\"Nr\").Value = Source.Fields(\"ID\").Value;;\r\n"
                 "\tDestination.Fields(\"Name\").Value = Source.Fields(\"Name\").Value;\r\n"
                 "\tDestination.Fields(\"Ort\").Value = Source.Fields(\"Ort\").Value;\r\n"
                 "}\r\n");
  EXPECT_EQ(Rows(),
            VB() ? "1;Mülle;Köln\n2;Ökono;Null\n" : "1;Müller-Lüdenscheidt;Köln\n2;Ökonom;Null\n");
}

// A hand-written script: the default members (rs("x")), Null tests, a
// statement of its own over the connection, and the record set's state.
TEST_P(RecordScripts, HandWrittenScriptUsesConnectionAndFieldMembers) {
  Convert(
      VB()
          ? "Function txConvertMain()\r\n"
            "  Dim n : n = SourceConnection.Execute(\"SELECT COUNT(*) FROM Kunden\")(0)\r\n"
            "  Destination(\"Nr\") = Source(\"ID\") * 10\r\n"
            "  Destination.Fields(\"Name\").Value = n & Source.Fields.Count & "
            "Destination.EditMode\r\n"
            "  If IsNull(Source(\"Ort\")) Then Destination(\"Ort\") = \"?\" Else _\r\n"
            "    Destination(\"Ort\") = UCase(Source.Fields(\"Ort\").Name & Source(\"Ort\"))\r\n"
            "End Function\r\n"
          : "function txConvertMain() {\r\n"
            "  var n = SourceConnection.Execute('SELECT COUNT(*) FROM Kunden').Fields(0).Value;\r\n"
            "  Destination.Fields('Nr').Value = Source.Fields('ID').Value * 10;\r\n"
            "  Destination.Fields('Name').Value = '' + n + Source.Fields.Count + "
            "Destination.EditMode;\r\n"
            "  var ort = Source.Fields('Ort');\r\n"
            "  Destination.Fields('Ort').Value = ort.Value === null ? '?' :\r\n"
            "    (ort.Name + ort.Value).toUpperCase();\r\n"
            "}\r\n");
  EXPECT_EQ(Rows(), "10;232;ORTKÖLN\n20;232;?\n");
}

// A failing field write is a run-time error of the script with its line.
TEST_P(RecordScripts, UnknownFieldFailsWithTheScriptLine) {
  EXPECT_ANY_THROW(Convert(VB() ? "Function txConvertMain()\r\n"
                                  "  Destination(\"Nr\") = 1\r\n"
                                  "  Destination(\"Gibtsnicht\") = 1\r\n"
                                  "End Function\r\n"
                                : "function txConvertMain() {\r\n"
                                  "  Destination.Fields('Nr').Value = 1;\r\n"
                                  "  Destination.Fields('Gibtsnicht').Value = 1;\r\n"
                                  "}\r\n"));
  EXPECT_EQ(control_.Error().Number, 3265);
  EXPECT_EQ(control_.Error().Line, 3);
}

// A conversion names the same fields record after record. What a line found
// the last time stands only while the record set still has that field at that
// place: closed, opened on another shape, another record set or Nothing in its
// place, the name is looked up again, with the error that raises.
TEST_P(RecordScripts, FieldNamesFollowTheRecordSetsShape) {
  auto target = std::make_shared<ado::Recordset>();
  auto other = std::make_shared<ado::Recordset>();
  other->GetFields().Append("Name", ado::adVarWChar, 10);
  other->Open();
  other->AddNew();
  control_.AddObject("Ziel", target);
  control_.AddObject("Andere", other);
  control_.AddCode(VB() ? "Dim rs\r\n"
                          "Function Put(v)\r\n"
                          "  rs.Fields(\"Name\") = v\r\n"
                          "  Put = rs.Fields(\"Name\") & \"\"\r\n"
                          "End Function\r\n"
                        : "var rs;\r\n"
                          "function Put(v) {\r\n"
                          "  rs.Fields('Name').Value = v;\r\n"
                          "  return '' + rs.Fields('Name').Value;\r\n"
                          "}\r\n");
  control_.ExecuteStatement(VB() ? "Set rs = Ziel" : "rs = Ziel;");
  auto put = [&](const char* value) {
    Variant args[] = {Variant(value)};
    return control_.Run("Put", args).ToText();
  };
  auto open = [&](const char* sql) {
    if (target->State() == ado::adStateOpen) target->Close();
    target->Open(sql, Variant(ObjectPtr(db_)), ado::adOpenKeyset, ado::adLockBatchOptimistic);
    target->AddNew();
  };

  open("SELECT * FROM Ziel");
  EXPECT_EQ(put("a"), "a");
  EXPECT_EQ(put("b"), "b");
  EXPECT_TRUE(target->GetFields().Item("Ort").Value().IsNull());

  target->Close();
  EXPECT_ANY_THROW(put("c"));
  EXPECT_EQ(control_.Error().Number, 3265);

  open("SELECT Ort, Name FROM Ziel");
  EXPECT_EQ(put("d"), "d");
  EXPECT_EQ(target->GetFields().Item("Name").Value().ToText(), "d");
  EXPECT_TRUE(target->GetFields().Item("Ort").Value().IsNull());

  open("SELECT Nr, Ort FROM Ziel");
  EXPECT_ANY_THROW(put("e"));
  EXPECT_EQ(control_.Error().Number, 3265);

  open("SELECT * FROM Ziel");
  EXPECT_EQ(put("f"), "f");
  control_.ExecuteStatement(VB() ? "Set rs = Andere" : "rs = Andere;");
  EXPECT_EQ(put("g"), "g");
  EXPECT_EQ(target->GetFields().Item("Name").Value().ToText(), "f");
  EXPECT_EQ(other->GetFields().Item("Name").Value().ToText(), "g");

  if (VB()) {
    control_.ExecuteStatement("Set rs = Nothing");
    EXPECT_ANY_THROW(put("h"));
    EXPECT_EQ(control_.Error().Number, 424);
  }
  target->Close();
}

// Record access a script makes itself: a connection by connection string, a
// record set opened on it, and an in-memory record set built field by field.
TEST_P(RecordScripts, ScriptsCreateConnectionsAndRecordsets) {
  std::string file = (folder_ / "test.db").string();
  control_.AddCode(
      VB() ? "Function Names(file)\r\n"
             "  Dim c, rs, s : Set c = CreateObject(\"ADODB.Connection\")\r\n"
             "  c.Open \"Driver={SQLite3};Database=\" & file\r\n"
             "  Set rs = CreateObject(\"ADODB.Recordset\")\r\n"
             "  rs.Open \"SELECT Name FROM Kunden ORDER BY ID\", c\r\n"
             "  Do Until rs.EOF : s = s & rs(\"Name\") & \";\" : rs.MoveNext : Loop\r\n"
             "  rs.Close : c.Close\r\n"
             "  Set rs = CreateObject(\"ADODB.Recordset\")\r\n"
             "  rs.Fields.Append \"X\", 202, 10\r\n"
             "  rs.Open\r\n"
             "  rs.AddNew \"X\", \"eins\"\r\n"
             "  rs.AddNew Array(\"X\"), Array(\"zwei\")\r\n"
             "  rs.MoveFirst\r\n"
             "  For Each f In rs.Fields : s = s & f.Name & rs.RecordCount & f.Value : Next\r\n"
             "  Names = s\r\n"
             "End Function\r\n"
           : "function Names(file) {\r\n"
             "  var c = new ActiveXObject('ADODB.Connection'), s = '';\r\n"
             "  c.Open('Driver={SQLite3};Database=' + file);\r\n"
             "  var rs = new ActiveXObject('ADODB.Recordset');\r\n"
             "  rs.Open('SELECT Name FROM Kunden ORDER BY ID', c);\r\n"
             "  for (; !rs.EOF; rs.MoveNext()) s += rs.Fields('Name').Value + ';';\r\n"
             "  rs.Close(); c.Close();\r\n"
             "  rs = new ActiveXObject('ADODB.Recordset');\r\n"
             "  rs.Fields.Append('X', 202, 10);\r\n"
             "  rs.Open();\r\n"
             "  rs.AddNew('X', 'eins');\r\n"
             "  rs.AddNew(); rs.Fields('X').Value = 'zwei'; rs.Update();\r\n"
             "  rs.MoveFirst();\r\n"
             "  for (var e = new Enumerator(rs.Fields); !e.atEnd(); e.moveNext())\r\n"
             "    s += e.item().Name + rs.RecordCount + e.item().Value;\r\n"
             "  return s;\r\n"
             "}\r\n");
  Variant args[] = {Variant(file)};
  EXPECT_EQ(control_.Run("Names", args).ToText(), "Müller-Lüdenscheidt;Ökonom;X2eins");
}

// An object of the host that answers a record set of its own (a job side's
// Recordset) hands scripts a usable one.
class Side : public BoundObject<Side> {
 public:
  std::string TypeName() const override { return "CJobSide"; }
  static const MemberTable<Side>& Members() {
    static const auto table = MemberTable<Side>().Property(
        "Recordset", [](Side& s, Args) { return Variant(ObjectPtr(s.rs)); });
    return table;
  }
  std::shared_ptr<ado::Recordset> rs;
};

TEST_P(RecordScripts, RecordSetsAnsweredByHostObjectsAreUsable) {
  auto side = std::make_shared<Side>();
  side->rs = db_->Execute("SELECT Name FROM Kunden ORDER BY ID");
  control_.AddObject("JobSource", side);
  EXPECT_EQ(control_
                .Eval(VB() ? "JobSource.Recordset(\"Name\") & JobSource.Recordset.EOF"
                           : "JobSource.Recordset.Fields('Name').Value + JobSource.Recordset.EOF")
                .ToText(),
            VB() ? "Müller-LüdenscheidtFalsch" : "Müller-Lüdenscheidtfalse");
}

INSTANTIATE_TEST_SUITE_P(Languages, RecordScripts, ::testing::Values("VBScript", "JScript"),
                         [](const auto& info) { return info.param; });

}  // namespace
}  // namespace ketrova::script
