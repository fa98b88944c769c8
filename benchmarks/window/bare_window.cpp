// bare-window: what the toolkit itself needs for a window as large as the application's.
#include <QApplication>
#include <QLabel>
#include <QPalette>
#include <QWidget>

int main(int count, char** arguments) {
    const QApplication application(count, arguments);
    QWidget window;
    window.setWindowTitle("Bare window");
    QPalette colours;
    colours.setColor(QPalette::Window, QColor(0x17, 0x19, 0x1C));
    colours.setColor(QPalette::WindowText, Qt::white);
    window.setPalette(colours);
    window.resize(1050, 668);
    QLabel label("A window with nothing but a label", &window);
    label.move(40, 40);
    window.show();
    return QApplication::exec();
}
