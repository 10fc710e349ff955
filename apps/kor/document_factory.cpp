#include "document.h"
#include "first_steps_document.h"
#include "jobs_document.h"
#include "logs_document.h"
#include "modules_document.h"
#include "script_document.h"
#include "support/text.h"

namespace kor {

Document* MakeDocument(const std::string& name, DocumentContext context) {
  auto is = [&](const char* document) { return ketrova::IsEqual(name, document); };
  if (is("KetrovatorCTL.frmJobs")) return new JobsDocument(std::move(context));
  if (is("KetrovatorCTL.frmLogs")) return new LogsDocument(std::move(context));
  if (is("KetrovatorCTL.frmModules")) return new ModulesDocument(std::move(context));
  if (is("KetrovatorCTL.frmOnStartProjekt"))
    return new ScriptDocument(ScriptDocument::Which::kOnStart, std::move(context));
  if (is("KetrovatorCTL.frmOnEndProjekt"))
    return new ScriptDocument(ScriptDocument::Which::kOnEnd, std::move(context));
  if (is("KetrovatorCTL.frmFirstSteps")) return new FirstStepsDocument(std::move(context));
  return nullptr;
}

}  // namespace kor
