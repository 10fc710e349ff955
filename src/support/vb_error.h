// The pending error, VB style.
//
// Inside Ketrova a failure is thrown as VbError {Number, Description, Source}.
// An operation that answers with an error text catches it at its boundary and
// records it in the thread's pending error Err(), which BuildErrorMessage reads,
// exactly as VB's Err object was read after "On Error GoTo". Provider failures
// carry negative numbers as OLE DB's did; script errors carry VBScript's
// numbers.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace ketrova {

class VbError : public std::exception {
 public:
  // An empty description is filled in with VB's German text for the number
  // (VbErrorText), when it has one.
  VbError(std::int32_t number, std::string description = {}, std::string source = {});

  std::int32_t Number;
  std::string Description;
  std::string Source;

  const char* what() const noexcept override { return Description.c_str(); }
};

// VB's German description of a run-time error number ("Typen unverträglich" for
// 13, "Überlauf" for 6 ...); for an unknown number "Anwendungs- oder
// objektdefinierter Fehler".
std::string VbErrorText(std::int32_t number);

// The pending error of this thread: VB's Err object.
class ErrObject {
 public:
  std::int32_t Number = 0;
  std::string Description;
  std::string Source;
  std::string HelpFile;
  std::int32_t HelpContext = 0;

  // Throws VbError with the given values (VB's Err.Raise). An empty description
  // takes VB's text for the number.
  [[noreturn]] void Raise(std::int32_t number, std::string source = {},
                          std::string description = {});
  // Records a caught error as pending.
  void Set(const VbError& error);
  // Resets to no error.
  void Clear();
};

// The thread's pending error.
ErrObject& Err();

// Records any exception as the pending error: a VbError as it is, anything else
// as error 440 with the exception's text. For catch (...) blocks at an
// operation's boundary.
void SetPendingError(std::exception_ptr error);

// Runs one statement with error trapping off (VB's "On Error Resume Next"): a
// failure is recorded as the pending error and the caller goes on. True when
// the statement succeeded. Err() is not cleared first, as in VB.
template <typename F>
bool ResumeNext(F&& statement) {
  try {
    statement();
    return true;
  } catch (...) {
    SetPendingError(std::current_exception());
    return false;
  }
}

}  // namespace ketrova
