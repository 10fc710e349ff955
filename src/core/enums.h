// The enumerations of the object tree. Their numbers are stored in project
// files and compared in code, so every value is fixed; most start at 1 and 0 is
// no member (a TDataBaseType of 0 behaves as undefined wherever code asks for
// "1 or less").
#pragma once

namespace ketrova {

enum TDataBaseType : int {
  dbtUndefined = 1,
  dbtAccess = 2,
  dbtSQLServer = 3,
  dbtInterbase = 4,
  dbtOracle = 5,
  dbtParadox = 6,
  dbtMySQL = 7,
  dbtExcel = 8,
  dbtODBC = 9,
  dbtOutlook = 10,
  dbtText = 11,
  dbtXML = 12,
  dbtWatcom = 13,
};

enum TDatabaseDirection : int { dbdSource = 1, dbdTarget = 2 };

enum TEditMode : int { edNew = 0, edEdit = 1 };

enum TScriptLanguage : int { sclVBScript = 1, sclJavaScript = 2 };

enum TJobType : int { jtDBOperation = 1, jtFileCopy = 2, jtRegistry = 3, jtEMail = 4 };

enum TTriggerType : int {
  ttOnStartProject = 1,
  ttOnEndProject = 2,
  ttOnStartConvert = 3,
  ttOnConvert = 4,
  ttOnEndConvert = 5,
  ttOnStartJob = 6,
  ttOnEndJob = 7,
};

// Spelled so on purpose: the name is part of the vocabulary.
enum TDataBassObjectType : int { dboTable = 1, dboView = 2, dboStoredProcedure = 3 };

// jitUndefined is negative: range checks must accept -99.
enum TJobItemType : int {
  jitTableView = 1,
  jitUDFView = 2,
  jitSQLInsertUpdate = 3,
  jitText = 4,
  jitExcel = 5,
  jitOutlook = 6,
  jitXML = 7,
  jitUndefined = -99,
};

enum TJobItemDirection : int { jidSource = 1, jidTarget = 2 };

enum TJobItemFilterType : int {
  jftLike = 1,
  jftNotLike = 2,
  jftEqual = 3,
  jftNotEqual = 4,
  jftLess = 5,
  jftLessEqual = 6,
  jftGreater = 7,
  jftGreaterEqual = 8,
  jftNone = 9,
};

// A field type unknown to the system (ADO's adIUnknown).
inline constexpr int kFieldTypeUnknown = 13;

}  // namespace ketrova
