#include "platform/desktop_text_controls.h"

#include <limits>

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextDocument>

#include "platform/desktop_window.h"

namespace platform {

DesktopTextControl::~DesktopTextControl() {
  // The widget goes after this, and whatever it says on the way reaches no derived class.
  writing_ = true;
}

void DesktopTextControl::Text(std::string value) {
  Count(Property::Text);
  text_ = std::move(value);
  if (!Widget()) return;
  writing_ = true;
  Show(QString::fromUtf8(text_.data(), std::ssize(text_)));
  writing_ = false;
}

void DesktopTextControl::Edited() {
  if (!writing_) text_ = Shown().toStdString();
}

DesktopTextField::DesktopTextField(DesktopWindow& window)
    : DesktopTextControl(new QLineEdit(window.Widget())) {
  // Qt's field would cut a text at 32767 characters.
  field()->setMaxLength(std::numeric_limits<int>::max());
  QObject::connect(field(), &QLineEdit::textChanged, [this] { Edited(); });
}

QLineEdit* DesktopTextField::field() const {
  return static_cast<QLineEdit*>(Widget());
}

void DesktopTextField::Show(const QString& text) {
  field()->setText(text);
}

QString DesktopTextField::Shown() const {
  return field()->text();
}

DesktopTextArea::DesktopTextArea(DesktopWindow& window)
    : DesktopTextControl(new QPlainTextEdit(window.Widget())) {
  area()->setTabChangesFocus(true);
  area()->setLineWrapMode(QPlainTextEdit::WidgetWidth);
  area()->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  QObject::connect(area(), &QPlainTextEdit::textChanged, [this] { Edited(); });
}

QPlainTextEdit* DesktopTextArea::area() const {
  return static_cast<QPlainTextEdit*>(Widget());
}

void DesktopTextArea::Show(const QString& text) {
  area()->setPlainText(text);
}

QString DesktopTextArea::Shown() const {
  // The raw text keeps a typed no-break space, which the plain text would turn into a blank;
  // the document keeps line ends as separators.
  QString text = area()->document()->toRawText();
  text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
  text.replace(QChar::LineSeparator, QLatin1Char('\n'));
  return text;
}

}  // namespace platform
