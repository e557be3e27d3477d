#include "qem_ctl/script.h"

#include <charconv>
#include <cmath>
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

double Number(const std::string& text, const std::string& what) {
  if (auto value = read_number(text)) return *value;
  throw bad_line(what + " needs a number, not \"" + text + "\"");
}

std::chrono::duration<double> Seconds(const std::string& text, const std::string& what) {
  const double seconds = Number(text, what);
  if (seconds < 0) throw bad_line(what + " can't be negative");
  return std::chrono::duration<double>(seconds);
}

long long Style(const std::string& text) {
  // Whole numbers within a long long's range: the largest double below 2^63 is exact.
  if (auto value = read_number(text);
      value && std::trunc(*value) == *value && std::fabs(*value) < 9223372036854775808.0) {
    return static_cast<long long>(*value);
  }
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

void Buttons(const std::string& value, window_keys& keys) {
  keys.buttons.emplace();
  for (std::size_t start = 0; start < value.size();) {
    std::size_t comma = value.find(',', start);
    if (comma == std::string::npos) comma = value.size();
    keys.buttons->push_back(Button(value.substr(start, comma - start)));
    start = comma + 1;
  }
}

struct key {
  std::string_view name;
  std::string_view synopsis;
  std::string_view meaning;
  void (*apply)(const std::string& value, window_keys& keys);
};

const key kKeys[] = {
    {"title", "title=TEXT", "the window's title",
     [](const std::string& v, window_keys& k) { k.title = v; }},
    {"message", "message=TEXT", "the message, wrapped in the window (or in the title bar)",
     [](const std::string& v, window_keys& k) { k.message = v; }},
    {"style", "style=N or style=FLAGS",
     "1 message (else in the title bar), 2 bar (buttons at its\n"
     "right, else centred), 4 hidden; FLAGS: message+bar+hidden",
     [](const std::string& v, window_keys& k) { k.style = Style(v); }},
    {"progress", "progress=X", "0 to 1 fills the bar; progress=busy (or below 0): busy bar",
     [](const std::string& v, window_keys& k) {
       k.progress = v == "busy" ? -1.0 : Number(v, "progress");
     }},
    {"buttons", "buttons=ID:TEXT,ID:TEXT",
     "the buttons, first one rightmost; buttons= removes them all", Buttons},
    {"button", "button=ID:TEXT", "one more button (for a TEXT with a comma); repeatable",
     [](const std::string& v, window_keys& k) {
       if (!k.buttons) k.buttons.emplace();
       k.buttons->push_back(Button(v));
     }},
};

void Apply(const word& w, window_keys& keys) {
  if (w.equals == std::string::npos) throw bad_line("\"" + w.text + "\" is no KEY=VALUE");
  const std::string name = w.text.substr(0, w.equals);
  for (const key& k : kKeys) {
    if (k.name == name) return k.apply(w.text.substr(w.equals + 1), keys);
  }
  std::string known;
  for (const key& k : kKeys) known += (known.empty() ? "" : ", ") + std::string(k.name);
  throw bad_line("unknown key \"" + name + "\" (" + known + ")");
}

step Send(const command& c) {
  step s{.what = step::kind::send};
  try {
    s.json = qem_client::to_json(c);
  } catch (const qem_client::command_refused& refused) {
    throw bad_line(refused.what());
  }
  return s;
}

// create, set and push: an ID, then keys.
template <command (*Make)(std::string, window_keys)>
step Window(std::string_view line) {
  const std::vector<word> words = Split(line);
  if (words.size() < 2) throw bad_line(words[0].text + " needs a window ID");
  window_keys keys;
  for (std::size_t i = 2; i < words.size(); ++i) Apply(words[i], keys);
  return Send(Make(words[1].text, std::move(keys)));
}

step Delete(std::string_view line) {
  const std::vector<word> words = Split(line);
  if (words.size() < 2) throw bad_line("delete needs a window ID");
  if (words.size() > 2) throw bad_line("delete takes no keys");
  return Send(command::remove(words[1].text));
}

step Json(std::string_view line) {
  const std::string text(line);
  if (auto why = qem_client::json_refusal(text)) throw bad_line("the JSON text " + *why);
  return {.what = step::kind::send, .json = text};
}

step Sleep(std::string_view line) {
  const std::vector<word> words = Split(line);
  if (words.size() != 2) throw bad_line("sleep takes one number of seconds");
  return {.what = step::kind::sleep, .limit = Seconds(words[1].text, "sleep")};
}

step Wait(std::string_view line) {
  const std::vector<word> words = Split(line);
  step s{.what = step::kind::wait};
  for (std::size_t i = 1; i < words.size(); ++i) {
    const word& w = words[i];
    if (w.equals != std::string::npos && w.text.compare(0, w.equals, "timeout") == 0) {
      s.limit = Seconds(w.text.substr(w.equals + 1), "timeout");
    } else if (i == 1) {
      s.obj_id = w.text;
    } else {
      throw bad_line("wait takes an ID and timeout=SECONDS, not \"" + w.text + "\"");
    }
  }
  return s;
}

struct form {
  // What a line of this form starts with: a word (followed by a blank or the end), or "{" or "#".
  std::string_view lead;
  std::string_view synopsis;
  std::string_view meaning;
  step (*read)(std::string_view line);  // the line without blanks around it
};

const form kForms[] = {
    {"create", "create ID [KEY=VALUE ...]", "a new window", Window<command::create>},
    {"set", "set ID [KEY=VALUE ...]", "changes the window's top state", Window<command::set>},
    {"push", "push ID [KEY=VALUE ...]",
     "puts a new state on top (a question); a press drops it again", Window<command::push>},
    {"delete", "delete ID", "closes the window", Delete},
    {"{", R"({"obj_id":"p1","cmd":...})", "a command in JSON, sent as it is", Json},
    {"sleep", "sleep SECONDS", "pauses; replies are still printed as they come", Sleep},
    {"wait", "wait [ID] [timeout=SECONDS]",
     "pauses until a reply of window ID (of any window without ID)\n"
     "has come that no earlier wait took; without timeout, for as\n"
     "long as it takes",
     Wait},
    {"#", "# ...", "a comment; blank lines are skipped too",
     [](std::string_view) { return step{}; }},
};

bool Starts(std::string_view line, std::string_view lead) {
  if (line.substr(0, lead.size()) != lead) return false;
  const bool word = lead.size() > 1;
  return !word || line.size() == lead.size() || IsBlank(line[lead.size()]);
}

}  // namespace

std::optional<double> read_number(std::string_view text) {
  // A "+" is read as the sign it is; from_chars knows only "-".
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size() ||
      !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

step parse_line(std::string_view line) {
  const std::string_view trimmed = platform::TrimView(line);
  if (trimmed.empty()) return {};
  for (const form& f : kForms) {
    if (Starts(trimmed, f.lead)) return f.read(trimmed);
  }
  std::string known;
  for (const form& f : kForms) {
    if (f.lead.size() > 1) known += std::string(f.lead) + ", ";
  }
  throw bad_line("unknown command \"" + Split(trimmed)[0].text + "\" (" + known +
                 "or a JSON object)");
}

std::string usage_entry(std::string_view synopsis, std::string_view meaning) {
  constexpr std::size_t kColumn = 32;
  std::string text = "  " + std::string(synopsis);
  text += synopsis.size() + 3 <= kColumn ? std::string(kColumn - text.size(), ' ')
                                         : "\n" + std::string(kColumn, ' ');
  for (char c : meaning) text += c == '\n' ? "\n" + std::string(kColumn, ' ') : std::string(1, c);
  return text + "\n";
}

std::string usage() {
  std::string text = "Steps:\n";
  for (const form& f : kForms) text += usage_entry(f.synopsis, f.meaning);
  text += "\nKeys:\n";
  for (const key& k : kKeys) text += usage_entry(k.synopsis, k.meaning);
  return text;
}

}  // namespace qem_ctl
