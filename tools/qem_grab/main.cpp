// qem_grab: saves a PNG of what an X display shows, the whole screen or one window, as the X
// server has it (the demo's pictures). Usage: qem_grab FILE.png [WINDOW_ID]; the display is the
// one DISPLAY names (run it with QT_QPA_PLATFORM=xcb). Exit status 0 saved, 1 nothing could be
// grabbed or saved, 2 bad usage.

#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3 || std::string(argv[1]).rfind("-", 0) == 0) {
    std::fputs("Usage: qem_grab FILE.png [WINDOW_ID]\n", stderr);
    return 2;
  }
  const std::string file = argv[1];
  const WId window = argc == 3 ? std::strtoul(argv[2], nullptr, 0) : 0;
  QGuiApplication application(argc, argv);
  QScreen* screen = QGuiApplication::primaryScreen();
  const QPixmap shot = screen ? screen->grabWindow(window) : QPixmap();
  if (shot.isNull() || !shot.save(QString::fromStdString(file), "PNG")) {
    std::fprintf(stderr, "qem_grab: nothing could be grabbed into %s\n", file.c_str());
    return 1;
  }
  return 0;
}
