#include "qem_ctl/script.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "client/command.h"
#include "platform/text.h"

namespace qem_ctl {

namespace {

using qem_client::button;
using qem_client::command;
using qem_client::window_keys;

// One word of a line: its text with quotes and escapes resolved, and where its first "=" outside
// quotes stands (npos when there is none).
struct word {
  std::string text;
  std::size_t equals = std::string::npos;
};

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

std::vector<word> Split(std::string_view line) {
  std::vector<word> words;
  std::size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && IsBlank(line[i])) ++i;
    if (i == line.size()) break;
    word w;
    while (i < line.size() && !IsBlank(line[i])) {
      char c = line[i++];
      if (c == '=' && w.equals == std::string::npos) w.equals = w.text.size();
      if (c != '"') {
        w.text.push_back(c);
        continue;
      }
      for (;;) {
        if (i == line.size()) throw bad_line("a quotation mark is not closed");
        c = line[i++];
        if (c == '"') break;
        if (c == '\\') {
          if (i == line.size()) throw bad_line("a quotation mark is not closed");
          c = line[i++];
          if (c == 'n')
            c = '\n';
          else if (c == 't')
            c = '\t';
          else if (c != '"' && c != '\\')
            throw bad_line(std::string("unknown escape \\") + c);
        }
        w.text.push_back(c);
      }
    }
    words.push_back(std::move(w));
  }
  return words;
}

// A number that fills the whole text; throws bad_line naming `what` otherwise.
double Number(const std::string& text, const std::string& what) {
  char* end = nullptr;
  errno = 0;
  double value = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || errno != 0 || !std::isfinite(value)) {
    throw bad_line(what + " needs a number, not \"" + text + "\"");
  }
  return value;
}

long long Style(const std::string& text) {
  char* end = nullptr;
  long long value = std::strtoll(text.c_str(), &end, 10);
  if (!text.empty() && *end == '\0') return value;
  long long sum = 0;
  std::size_t start = 0;
  for (;;) {
    std::size_t plus = text.find('+', start);
    std::string flag = text.substr(start, plus - start);
    if (flag == "message")
      sum |= qem_client::style::message;
    else if (flag == "bar")
      sum |= qem_client::style::bar;
    else if (flag == "hidden")
      sum |= qem_client::style::hidden;
    else
      throw bad_line("style needs a number or flags message+bar+hidden, not \"" + text + "\"");
    if (plus == std::string::npos) return sum;
    start = plus + 1;
  }
}

button Button(const std::string& text) {
  std::size_t colon = text.find(':');
  if (colon == std::string::npos) return {text, text};
  return {text.substr(0, colon), text.substr(colon + 1)};
}

void Apply(const word& w, window_keys& keys) {
  if (w.equals == std::string::npos) {
    throw bad_line("\"" + w.text + "\" is no KEY=VALUE");
  }
  const std::string key = w.text.substr(0, w.equals);
  const std::string value = w.text.substr(w.equals + 1);
  if (key == "title") {
    keys.title = value;
  } else if (key == "message") {
    keys.message = value;
  } else if (key == "style") {
    keys.style = Style(value);
  } else if (key == "progress") {
    keys.progress = value == "busy" ? -1.0 : Number(value, "progress");
  } else if (key == "buttons") {
    keys.buttons.emplace();
    for (std::size_t start = 0; start < value.size();) {
      std::size_t comma = value.find(',', start);
      if (comma == std::string::npos) comma = value.size();
      keys.buttons->push_back(Button(value.substr(start, comma - start)));
      start = comma + 1;
    }
  } else if (key == "button") {
    if (!keys.buttons) keys.buttons.emplace();
    keys.buttons->push_back(Button(value));
  } else {
    throw bad_line("unknown key \"" + key +
                   "\" (title, message, style, progress, buttons, button)");
  }
}

step Send(const command& c) {
  step s;
  s.what = step::kind::send;
  try {
    s.json = qem_client::to_json(c);
  } catch (const qem_client::command_refused& refused) {
    throw bad_line(refused.what());
  }
  return s;
}

step Wait(const std::vector<word>& words) {
  step s;
  s.what = step::kind::wait;
  for (std::size_t i = 1; i < words.size(); ++i) {
    const word& w = words[i];
    if (w.equals != std::string::npos && w.text.compare(0, w.equals, "timeout") == 0) {
      s.seconds = Number(w.text.substr(w.equals + 1), "timeout");
      if (s.seconds < 0) throw bad_line("timeout can't be negative");
    } else if (i == 1) {
      s.obj_id = w.text;
    } else {
      throw bad_line("wait takes an ID and timeout=SECONDS, not \"" + w.text + "\"");
    }
  }
  return s;
}

}  // namespace

step parse_line(std::string_view line) {
  const std::string_view trimmed = platform::TrimView(line);
  if (trimmed.empty() || trimmed.front() == '#') return {};
  if (trimmed.front() == '{') {
    const std::string text(trimmed);
    if (auto why = qem_client::json_refusal(text)) throw bad_line("the JSON text " + *why);
    step s;
    s.what = step::kind::send;
    s.json = text;
    return s;
  }
  const std::vector<word> words = Split(trimmed);
  const std::string& verb = words[0].text;
  if (verb == "sleep") {
    if (words.size() != 2) throw bad_line("sleep takes one number of seconds");
    step s;
    s.what = step::kind::sleep;
    s.seconds = Number(words[1].text, "sleep");
    if (s.seconds < 0) throw bad_line("sleep can't be negative");
    return s;
  }
  if (verb == "wait") return Wait(words);
  if (verb != "create" && verb != "set" && verb != "push" && verb != "delete") {
    throw bad_line("unknown command \"" + verb +
                   "\" (create, set, push, delete, sleep, wait, or a JSON object)");
  }
  if (words.size() < 2) throw bad_line(verb + " needs a window ID");
  const std::string& id = words[1].text;
  if (verb == "delete") {
    if (words.size() > 2) throw bad_line("delete takes no keys");
    return Send(command::remove(id));
  }
  window_keys keys;
  for (std::size_t i = 2; i < words.size(); ++i) Apply(words[i], keys);
  if (verb == "create") return Send(command::create(id, std::move(keys)));
  if (verb == "set") return Send(command::set(id, std::move(keys)));
  return Send(command::push(id, std::move(keys)));
}

}  // namespace qem_ctl
