// Windows drawn for real at the screen scale QT_SCALE_FACTOR gives: the picture is the layout's
// size times the scale, every control the layout shows has ink where it stands, and the margins
// stay empty. Pictures go to the test's folder, and to $QEM_SCREENSHOT_DIR when that is set
// (which is how the README's pictures are made).

#include <gtest/gtest.h>

#include <QImage>
#include <QPixmap>
#include <QWidget>
#include <cstdlib>
#include <string>

#include "progress_fixture.h"
#include "support/temp_env.h"

namespace {

using Screenshot = qem_test::TempEnvTest;

bool HasInk(const QImage& image, const QRect& rect, QRgb background) {
  const QRect inside = rect.intersected(image.rect());
  for (int y = inside.top(); y <= inside.bottom(); ++y) {
    for (int x = inside.left(); x <= inside.right(); ++x) {
      if (image.pixel(x, y) != background) return true;
    }
  }
  return false;
}

TEST_F(Screenshot, ControlsAreDrawnWhereTheLayoutPutThemAtTheScreensScale) {
  const char* scale_factor = std::getenv("QT_SCALE_FACTOR");
  const int scale = scale_factor ? std::atoi(scale_factor) : 1;
  const std::string suffix = scale == 1 ? ".png" : "@" + std::to_string(scale) + "x.png";
  const std::pair<std::string, const char*> cases[] = {
      {"progress-style3" + suffix,
       R"({"style":3,"message":"Copying 1,204 files to the backup disk","progress":0.4,)"
       R"("btn_spec":[{"id":"stop","text":"Stop"},{"id":"pause","text":"Pause"}]})"},
      {"progress-question" + suffix,
       R"({"style":1,"message":"A file named report.pdf is already there. Replace it?",)"
       R"("btn_spec":[{"id":"yes","text":"Replace"},{"id":"no","text":"Keep both"}]})"},
  };
  for (const auto& [file, create] : cases) {
    auto w = qem_test::MakeWindow(create, nullptr);
    // A rectangle of the layout, in points, as device pixels of the picture.
    const auto device = [&](QRect r) { return QRect(r.topLeft() * scale, r.size() * scale); };
    const int height = static_cast<int>(w->Height());
    const QImage image = w->Widget()->grab().toImage();
    ASSERT_EQ(image.devicePixelRatio(), scale) << file;
    ASSERT_EQ(image.size(), QSize(530, height) * scale) << file;
    ASSERT_TRUE(image.save(QString::fromStdString((tmp() / file).string())));
    if (const char* dir = std::getenv("QEM_SCREENSHOT_DIR")) {
      image.save(QString::fromStdString(std::string(dir) + "/" + file));
    }
    const QRgb background = image.pixel(2, 2);
    EXPECT_FALSE(HasInk(image, device(QRect(0, 0, 20, height)), background)) << file;
    EXPECT_FALSE(HasInk(image, device(QRect(0, height - 18, 530, 18)), background)) << file;
    const platform::DesktopUIControl* controls[] = {&w->Label1(), &w->ProgressBar1(), &w->btn(0),
                                                    &w->btn(1)};
    for (const auto* c : controls) {
      const QRect rect(c->Left(), c->Top(), c->Width(), c->Height());
      EXPECT_EQ(HasInk(image, device(rect), background), c->Visible()) << file << " " << c->Left();
    }
  }
}

}  // namespace
