#include "dialogs/job_mapping_page.h"

#include <QLabel>
#include <QPushButton>
#include <QTableWidget>

namespace ketrova::dialogs {

JobMappingPage::JobMappingPage(QWidget* parent)
    : QWidget(parent),
      sourceTitle_(new QLabel(this)),
      targetTitle_(new QLabel(this)),
      gridSource_(new QTableWidget(this)),
      gridTarget_(new QTableWidget(this)),
      cmdCopy_(new QPushButton(this)),
      cmdCopyAll_(new QPushButton(this)),
      cmdClear_(new QPushButton(this)),
      cmdClearAll_(new QPushButton(this)) {}

JobMappingPage::~JobMappingPage() = default;

void JobMappingPage::ClearGrids() {}
void JobMappingPage::FillSourceColumns() {}
void JobMappingPage::InitTargetColumns() {}
bool JobMappingPage::AnyAssigned() const {
  return false;
}
void JobMappingPage::ClearAssignmentsOf(const std::string&) {}
bool JobMappingPage::WriteMapping() {
  return false;
}
int JobMappingPage::SourceRowCount() const {
  return 0;
}
int JobMappingPage::TargetRowCount() const {
  return 0;
}
std::string JobMappingPage::SourceText(int) const {
  return {};
}
std::string JobMappingPage::AssignedSource(int) const {
  return {};
}
std::string JobMappingPage::TargetName(int) const {
  return {};
}
void JobMappingPage::CopySourceColumn2TargetColumn() {}
void JobMappingPage::CopyAllSourceColumn2AllTargetColumn() {}
void JobMappingPage::ClearTargetColumn() {}
void JobMappingPage::ClearAllTargetColumn() {}
void JobMappingPage::SetAssigned(int, const std::string&) {}

}  // namespace ketrova::dialogs
