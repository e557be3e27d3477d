#include "progress_fixture.h"

#include <QPushButton>
#include <QtTest/QTest>

#include "json/tree_dictionary.h"

namespace qem_test {

double TableMeasurer::StringHeight(const std::string& text, const std::string&, double, double) {
  auto found = heights.find(text);
  return found == heights.end() ? 17.0 : found->second;
}

double TableMeasurer::StringWidth(const std::string& text, const std::string&, double) {
  auto found = widths.find(text);
  return found == widths.end() ? 10.0 * static_cast<double>(text.size()) : found->second;
}

std::shared_ptr<platform::Dictionary> Command(const std::string& json) {
  return JSON::JSONStringToTreeDictionary(json);
}

std::unique_ptr<wProgress> MakeWindow(const std::string& create_json,
                                      std::shared_ptr<platform::TextMeasurer> measurer,
                                      std::shared_ptr<message_forwarder> forwarder) {
  return std::make_unique<wProgress>("w1", Command(create_json), std::move(forwarder),
                                     std::move(measurer));
}

long TotalWrites(const wProgress& window) {
  long total = window.Writes().Total() + window.ProgressBar1().Writes().Total() +
               window.Label1().Writes().Total();
  for (const auto* b : window.btns()) total += b->Writes().Total();
  return total;
}

void ResetWrites(wProgress& window) {
  window.ResetWrites();
  window.ProgressBar1().ResetWrites();
  window.Label1().ResetWrites();
  for (auto* b : window.btns()) b->ResetWrites();
}

void Press(wProgress& window, int index) {
  QTest::mouseClick(window.btn(index).Widget(), Qt::LeftButton);
}

}  // namespace qem_test
