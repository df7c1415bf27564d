#include <QApplication>
#include <QMainWindow>

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QMainWindow frame;
  frame.setWindowTitle("QUARVEL - Display and handle diffraction patterns");
  frame.show();
  return QApplication::exec();
}
