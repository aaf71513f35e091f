// The floor of the start-up benchmark: a bare Qt Widgets program with the TLS library loaded, which shows
// one window of the program's size and then idles. It prints "shown" where the program logs that its
// window is being shown.
#include <QApplication>
#include <QSslSocket>
#include <QWidget>

#include <cstdio>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    if (!QSslSocket::supportsSsl())
        return 1;
    QWidget window;
    window.resize(340, 500);
    std::printf("shown\n");
    std::fflush(stdout);
    window.show();
    return app.exec();
}
