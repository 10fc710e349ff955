// The base of the documents' lists: a Qt item model that reads the project on
// every call (it keeps no copy) and that Reset() announces as changed, since
// the project raises no change events of its own.
#pragma once

#include <functional>
#include <memory>

class QObject;

namespace ketrova {
class CConverter;
}

namespace kor {

using ProjectSource = std::function<std::shared_ptr<ketrova::CConverter>()>;

template <typename QtModel>
class ProjectModel : public QtModel {
 public:
  ProjectModel(ProjectSource project, QObject* parent)
      : QtModel(parent), project_(std::move(project)) {}
  void Reset() {
    this->beginResetModel();
    this->endResetModel();
  }

 protected:
  // The project; null when there is none.
  std::shared_ptr<ketrova::CConverter> Project() const { return project_(); }

 private:
  ProjectSource project_;
};

}  // namespace kor
