#include "dialogs/input_box.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace ketrova::dialogs {

std::optional<std::string> ShowInputBox(QWidget* parent, const std::string& prompt,
                                        const std::string& title, const std::string& defaultText) {
  QDialog dialog(parent);
  dialog.setObjectName(QStringLiteral("InputBox"));
  dialog.setWindowTitle(title.empty() ? QStringLiteral("Ketrova") : QString::fromStdString(title));

  auto* label = new QLabel(QString::fromStdString(prompt), &dialog);
  label->setObjectName(QStringLiteral("lblPrompt"));
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);

  auto* input = new QLineEdit(QString::fromStdString(defaultText), &dialog);
  input->setObjectName(QStringLiteral("txtInput"));
  input->selectAll();
  label->setBuddy(input);

  auto* buttons = new QDialogButtonBox(&dialog);
  QPushButton* ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
  ok->setObjectName(QStringLiteral("vbOK"));
  ok->setDefault(true);
  QPushButton* cancel =
      buttons->addButton(QStringLiteral("Abbrechen"), QDialogButtonBox::RejectRole);
  cancel->setObjectName(QStringLiteral("vbCancel"));
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);

  auto* layout = new QVBoxLayout(&dialog);
  layout->addWidget(label);
  layout->addWidget(input);
  layout->addWidget(buttons);
  dialog.setMinimumWidth(360);
  input->setFocus();

  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return input->text().toStdString();
}

}  // namespace ketrova::dialogs
