// Windows drawn for real: every control the layout shows has ink where the layout put it, and
// the margins stay empty. The pictures go to the test's folder, and to $QEM_SCREENSHOT_DIR when
// that is set (which is how the README's pictures are made).

#include <gtest/gtest.h>

#include <QImage>
#include <QPixmap>
#include <QWidget>
#include <cstdlib>

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

TEST_F(Screenshot, ControlsAreDrawnWhereTheLayoutPutThem) {
  const std::pair<const char*, const char*> cases[] = {
      {"progress-style3.png",
       R"({"style":3,"message":"Copying 1,204 files to the backup disk","progress":0.4,)"
       R"("btn_spec":[{"id":"stop","text":"Stop"},{"id":"pause","text":"Pause"}]})"},
      {"progress-question.png",
       R"({"style":1,"message":"A file named report.pdf is already there. Replace it?",)"
       R"("btn_spec":[{"id":"yes","text":"Replace"},{"id":"no","text":"Keep both"}]})"},
  };
  for (const auto& [file, create] : cases) {
    auto w = qem_test::MakeWindow(create, nullptr);
    const QImage image = w->Widget()->grab().toImage();
    ASSERT_EQ(image.size(), QSize(530, static_cast<int>(w->Height()))) << file;
    ASSERT_TRUE(image.save(QString::fromStdString((tmp() / file).string())));
    if (const char* dir = std::getenv("QEM_SCREENSHOT_DIR")) {
      image.save(QString::fromStdString(std::string(dir) + "/" + file));
    }
    const QRgb background = image.pixel(2, 2);
    EXPECT_FALSE(HasInk(image, QRect(0, 0, 20, image.height()), background)) << file;
    EXPECT_FALSE(HasInk(image, QRect(0, image.height() - 18, 530, 18), background)) << file;
    const platform::DesktopUIControl* controls[] = {&w->Label1(), &w->ProgressBar1(), &w->btn(0),
                                                    &w->btn(1)};
    for (const auto* c : controls) {
      const QRect rect(static_cast<int>(c->Left()), static_cast<int>(c->Top()),
                       static_cast<int>(c->Width()), static_cast<int>(c->Height()));
      EXPECT_EQ(HasInk(image, rect, background), c->Visible()) << file << " " << c->Left();
    }
  }
}

}  // namespace
