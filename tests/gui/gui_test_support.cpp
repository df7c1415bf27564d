#include "tests/gui/gui_test_support.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTimer>

namespace quarvel::test {

void whenModalOpens(std::function<void(QWidget*)> answer) {
  auto* timer = new QTimer(qApp);
  QObject::connect(timer, &QTimer::timeout, [timer, answer = std::move(answer)] {
    QWidget* modal = QApplication::activeModalWidget();
    if (modal == nullptr) return;
    timer->stop();
    timer->deleteLater();
    answer(modal);
  });
  timer->start(5);
}

void whenWindowOpens(const QString& title, std::function<void(QWidget*)> answer) {
  auto* timer = new QTimer(qApp);
  QObject::connect(timer, &QTimer::timeout, [timer, title, answer = std::move(answer)] {
    for (QWidget* w : QApplication::topLevelWidgets()) {
      if (w->isVisible() && w->windowTitle() == title) {
        timer->stop();
        timer->deleteLater();
        answer(w);
        return;
      }
    }
  });
  timer->start(5);
}

QString messageText(QWidget* box) {
  auto* message = qobject_cast<QMessageBox*>(box);
  return message != nullptr ? message->text() : QString();
}

void clickButton(QWidget* box, const QString& text) {
  for (auto* button : box->findChildren<QAbstractButton*>()) {
    if (button->text().remove('&') == text) {
      button->click();
      return;
    }
  }
  ADD_FAILURE() << "no button " << text.toStdString();
}

}  // namespace quarvel::test

// One QApplication for all GUI tests, on the offscreen platform unless told otherwise.
int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
