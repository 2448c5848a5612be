#include "tool/ShellLine.h"

#include <optional>

namespace quorvix::cli {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f'; }

}  // namespace

std::variant<std::vector<std::string>, UsageError> splitShellLine(std::string_view line) {
  std::vector<std::string> words;
  // The word being read; empty optional between words (so that "" can make an empty word).
  std::optional<std::string> word;

  std::size_t i = 0;
  while (i < line.size()) {
    const char c = line[i];
    if (isBlank(c)) {
      if (word) words.push_back(std::move(*word));
      word.reset();
      ++i;
    } else if (c == '#' && !word) {
      break;
    } else if (c == '\'') {
      const auto close = line.find('\'', i + 1);
      if (close == std::string_view::npos) return UsageError{"unterminated ' quote"};
      if (!word) word.emplace();
      word->append(line.substr(i + 1, close - i - 1));
      i = close + 1;
    } else if (c == '"') {
      if (!word) word.emplace();
      ++i;
      bool closed = false;
      while (i < line.size()) {
        const char q = line[i];
        if (q == '"') {
          closed = true;
          ++i;
          break;
        }
        if (q == '\\' && i + 1 < line.size() && (line[i + 1] == '"' || line[i + 1] == '\\')) {
          word->push_back(line[i + 1]);
          i += 2;
        } else {
          word->push_back(q);
          ++i;
        }
      }
      if (!closed) return UsageError{"unterminated \" quote"};
    } else if (c == '\\') {
      if (i + 1 >= line.size()) return UsageError{"the line ends in a backslash"};
      if (!word) word.emplace();
      word->push_back(line[i + 1]);
      i += 2;
    } else {
      if (!word) word.emplace();
      word->push_back(c);
      ++i;
    }
  }
  if (word) words.push_back(std::move(*word));
  return words;
}

}  // namespace quorvix::cli
