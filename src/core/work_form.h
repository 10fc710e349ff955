// The work form: one small modeless window at a time that shows what a long
// operation is doing, with a caption, two labels and a progress bar. These
// functions hold the logic of what is shown when; the drawing is done by the
// current ui::UserInterface through its WorkForm primitives.
#pragma once

#include <string>

namespace ketrova {

// Closes any open work form and opens a new one. When `inMax` differs from
// `fMin` the bar is shown (a negative `inMax` becomes `fMin` + 1); when they are
// equal the bar is hidden and only the labels show.
void WorkFormOpen(const std::string& szCaption, const std::string& szText1,
                  const std::string& szText2, double fMin = 0, double inMax = 0, double fValue = 0);
void WorkFormClose();
// Opens the form if needed and sets the bar; the triple 0, 1, 0 hides it.
// Never fails.
void WorkFormProgress(double fMin, double inMax, double fValue);
// Opens the form if needed; a non-empty caption replaces the caption; both
// labels are set, empty or not.
void WorkFormCaption(const std::string& szCaption, const std::string& szText1,
                     const std::string& szText2);
// On an open form, each non-empty text replaces its label.
void WorkFormText(const std::string& szText1, const std::string& szText2);
// Whether the work form is open.
bool WorkFormIsOpen();

}  // namespace ketrova
