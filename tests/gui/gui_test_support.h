// Helpers of the GUI tests: a QApplication on the offscreen platform, answering the next modal
// window the code under test opens, and finding menu actions by id.
#pragma once

#include <functional>

#include <QString>
#include <QWidget>

namespace quarvel::test {

// Calls `answer` with the next modal window (message box, dialog) as soon as it is open; the
// answer must close it. Lets a test drive code that calls exec().
void whenModalOpens(std::function<void(QWidget*)> answer);

// Calls `answer` with the next visible top-level window titled `title` (a non-modal dialog).
void whenWindowOpens(const QString& title, std::function<void(QWidget*)> answer);

// The text of a message box (empty for other widgets), and a click on its button `text`.
QString messageText(QWidget* box);
void clickButton(QWidget* box, const QString& text);

}  // namespace quarvel::test
