// The peer of window_cost.py: a window of the toolkit with nothing in it.

#include <QApplication>
#include <QMainWindow>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QMainWindow window;
    window.resize(1000, 900);
    window.show();
    return QApplication::exec();
}
