// ADO's enumerations with ADO's numeric values. Scripts and project files carry
// these numbers, so they must never change.
#pragma once

#include <cstdint>

namespace ketrova::ado {

enum DataTypeEnum : int {
  adEmpty = 0,
  adSmallInt = 2,
  adInteger = 3,
  adSingle = 4,
  adDouble = 5,
  adCurrency = 6,
  adDate = 7,
  adBSTR = 8,
  adIDispatch = 9,
  adError = 10,
  adBoolean = 11,
  adVariant = 12,
  adIUnknown = 13,
  adDecimal = 14,
  adTinyInt = 16,
  adUnsignedTinyInt = 17,
  adUnsignedSmallInt = 18,
  adUnsignedInt = 19,
  adBigInt = 20,
  adUnsignedBigInt = 21,
  adFileTime = 64,
  adGUID = 72,
  adBinary = 128,
  adChar = 129,
  adWChar = 130,
  adNumeric = 131,
  adUserDefined = 132,
  adDBDate = 133,
  adDBTime = 134,
  adDBTimeStamp = 135,
  adChapter = 136,
  adPropVariant = 138,
  adVarNumeric = 139,
  adVarChar = 200,
  adLongVarChar = 201,
  adVarWChar = 202,
  adLongVarWChar = 203,
  adVarBinary = 204,
  adLongVarBinary = 205,
};

enum CursorTypeEnum : int {
  adOpenUnspecified = -1,
  adOpenForwardOnly = 0,
  adOpenKeyset = 1,
  adOpenDynamic = 2,
  adOpenStatic = 3,
};

enum LockTypeEnum : int {
  adLockUnspecified = -1,
  adLockReadOnly = 1,
  adLockPessimistic = 2,
  adLockOptimistic = 3,
  adLockBatchOptimistic = 4,
};

enum EditModeEnum : int {
  adEditNone = 0,
  adEditInProgress = 1,
  adEditAdd = 2,
  adEditDelete = 4,
};

enum ObjectStateEnum : int {
  adStateClosed = 0,
  adStateOpen = 1,
  adStateConnecting = 2,
  adStateExecuting = 4,
  adStateFetching = 8,
};

enum SchemaEnum : int {
  adSchemaTables = 20,
};

enum AffectEnum : int {
  adAffectCurrent = 1,
  adAffectGroup = 2,
  adAffectAll = 3,
  adAffectAllChapters = 4,
};

enum FieldAttributeEnum : int {
  adFldUnspecified = -1,
  adFldMayDefer = 0x2,
  adFldUpdatable = 0x4,
  adFldUnknownUpdatable = 0x8,
  adFldFixed = 0x10,
  adFldIsNullable = 0x20,
  adFldMayBeNull = 0x40,
  adFldLong = 0x80,
  adFldRowID = 0x100,
  adFldRowVersion = 0x200,
  adFldCacheDeferred = 0x1000,
  adFldIsChapter = 0x2000,
  adFldNegativeScale = 0x4000,
  adFldKeyColumn = 0x8000,
  adFldIsRowURL = 0x10000,
  adFldIsDefaultStream = 0x20000,
  adFldIsCollection = 0x40000,
};

enum FieldStatusEnum : int {
  adFieldOK = 0,
  adFieldCantConvertValue = 2,
  adFieldIsNull = 3,
  adFieldTruncated = 4,
  adFieldDataOverflow = 6,
  adFieldDefault = 13,
  adFieldUnavailable = 8,
  adFieldPendingInsert = 0x10000,
  adFieldPendingChange = 0x40000,
};

// Options of Open and Execute; -1 is "unspecified" and is what the system passes.
enum CommandTypeEnum : int {
  adCmdUnspecified = -1,
  adCmdText = 1,
  adCmdTable = 2,
  adCmdStoredProc = 4,
  adCmdUnknown = 8,
  adCmdTableDirect = 512,
  adExecuteNoRecords = 128,
};

// ADOX column attributes.
enum ColumnAttributesEnum : int {
  adColFixed = 1,
  adColNullable = 2,
};

// The HRESULT-style numbers that provider failures carry, as OLE DB's did.
inline constexpr std::int32_t kErrGeneral = -2147467259;           // E_FAIL
inline constexpr std::int32_t kErrStatementRefused = -2147217900;  // DB_E_ERRORSINCOMMAND
inline constexpr std::int32_t kErrUnknownTable = -2147217865;      // DB_E_NOTABLE
inline constexpr std::int32_t kErrLoginRefused = -2147217843;      // DB_SEC_E_AUTH_FAILED
inline constexpr std::int32_t kErrMultipleStep = -2147217887;      // DB_E_ERRORSOCCURRED
inline constexpr std::int32_t kErrObjectClosed = 3704;             // operation on a closed object
inline constexpr std::int32_t kErrBofEof = 3021;                   // no current record
inline constexpr std::int32_t kErrItemNotFound = 3265;             // not in the collection
inline constexpr std::int32_t kErrObjectOpen = 3705;               // operation on an open object
inline constexpr std::int32_t kErrNotSupported = 3251;             // provider does not support it
inline constexpr std::int32_t kErrArguments = 3001;  // wrong, out of range or conflicting

}  // namespace ketrova::ado
