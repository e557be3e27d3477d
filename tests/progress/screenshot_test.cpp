// A laid-out window drawn for real: every control the layout shows has ink where the layout put
// it, and nothing is drawn in the margins. The pictures go to the test's own folder, and also to
// $QEM_SCREENSHOT_DIR when that is set (that is how the README's pictures are made).

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include <QImage>
#include <QPixmap>
#include <QWidget>

#include "progress_fixture.h"
#include "support/temp_env.h"

namespace {

using Screenshot = qem_test::TempEnvTest;

// True when the rectangle holds a pixel that differs from the window's background.
bool HasInk(const QImage& image, QRect rect, QRgb background) {
  rect = rect.intersected(image.rect());
  for (int y = rect.top(); y <= rect.bottom(); ++y) {
    for (int x = rect.left(); x <= rect.right(); ++x) {
      if (image.pixel(x, y) != background) return true;
    }
  }
  return false;
}

QRect RectOf(const platform::DesktopUIControl& c) {
  return QRect(static_cast<int>(c.Left()), static_cast<int>(c.Top()), static_cast<int>(c.Width()),
               static_cast<int>(c.Height()));
}

TEST_F(Screenshot, ControlsAreDrawnWhereTheLayoutPutThem) {
  struct Case {
    const char* file;
    const char* create;
  };
  const Case cases[] = {
      {"progress-style3.png",
       R"({"style":3,"title":"Backup","message":"Copying 1,204 files to the backup disk",)"
       R"("progress":0.4,"btn_spec":[{"id":"stop","text":"Stop"},{"id":"pause","text":"Pause"}]})"},
      {"progress-question.png",
       R"({"style":1,"title":"Backup","message":"A file named report.pdf is already there. )"
       R"(Replace it?","btn_spec":[{"id":"yes","text":"Replace"},{"id":"no","text":"Keep both"}]})"},
      {"progress-style2.png", R"({"style":2,"message":"Indexing","progress":0.75})"},
  };
  for (const auto& c : cases) {
    auto w = qem_test::MakeWindow(c.create, nullptr);
    w->Show();
    const QImage image = w->Widget()->grab().toImage();
    // A window lower than its minimum height shows at the minimum.
    ASSERT_EQ(image.size(), QSize(530, std::max(64, static_cast<int>(w->Height())))) << c.file;
    ASSERT_TRUE(image.save(QString::fromStdString((tmp() / c.file).string()))) << c.file;
    if (const char* dir = std::getenv("QEM_SCREENSHOT_DIR")) {
      image.save(QString::fromStdString(std::string(dir) + "/" + c.file));
    }
    const QRgb background = image.pixel(2, 2);
    EXPECT_FALSE(HasInk(image, QRect(0, 0, 20, image.height()), background)) << c.file;
    EXPECT_FALSE(HasInk(image, QRect(0, image.height() - 18, 530, 18), background)) << c.file;
    for (const platform::DesktopUIControl* control :
         {static_cast<const platform::DesktopUIControl*>(&w->Label1()),
          static_cast<const platform::DesktopUIControl*>(&w->ProgressBar1()),
          static_cast<const platform::DesktopUIControl*>(&w->btn(0)),
          static_cast<const platform::DesktopUIControl*>(&w->btn(1))}) {
      EXPECT_EQ(HasInk(image, RectOf(*control), background), control->Visible()) << c.file;
    }
  }
}

}  // namespace
