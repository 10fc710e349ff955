// The documents that the navigator opens for the plug-in's project (jobs,
// event log, script modules, start and end scripts, first steps). They reach
// the project only through the object the plug-in publishes as "Converter"
// and keep no state of their own: every edit is written into the project at
// once, and Refresh() shows the project afresh, since the project raises no
// change events. The host refreshes its open documents after each event it
// raises and when a document comes to the front.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <string>

namespace ketrova {
class CConverter;
}

namespace kor {

struct DocumentContext {
  // The project; null when the plug-in published none.
  std::function<std::shared_ptr<ketrova::CConverter>()> converter;
  // Raises the host's click event for a button of the document (its key in
  // upper case), as a toolbar button does.
  std::function<void(const std::string& key)> raiseClick;
  // The value of a host variable ("gszDIR_HTMRoot").
  std::function<std::string(const std::string& name)> variable;
};

class Document : public QWidget {
  Q_OBJECT
 public:
  Document(DocumentContext context, QWidget* parent = nullptr)
      : QWidget(parent), context_(std::move(context)) {}
  virtual void Refresh() = 0;

 protected:
  // The project, or null (and the document shows nothing).
  std::shared_ptr<ketrova::CConverter> Project() const {
    return context_.converter ? context_.converter() : nullptr;
  }
  DocumentContext context_;
};

// The document `name` ("KetrovatorCTL.frmJobs" ...), or null when it is none
// of the six this host provides.
Document* MakeDocument(const std::string& name, DocumentContext context);

}  // namespace kor
