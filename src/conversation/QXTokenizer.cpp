#include "quorvix/conversation/QXTokenizer.h"

#include <re2/re2.h>

#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "engine/Helpers.h"
#include "core/WordScan.h"
#include "engine/JsonParse.h"
#include "platform/Log.h"

namespace quorvix {

namespace {

constexpr std::string_view kMaskPattern = "[0-9]{6,}";
constexpr std::string_view kRestorePattern = "[0-9]{4,}";

using Span = std::pair<std::size_t, std::size_t>;  // offset, length

int64_t randomStart() {
  std::random_device device;
  const auto value = static_cast<uint32_t>(device());
  return static_cast<int64_t>(value % 100000U) + 200000;
}

// The length of the text without its last character (a whole UTF-8 sequence).
std::size_t withoutLastCharacter(std::string_view text) {
  std::size_t end = text.size() - 1;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  return end;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// N when the pattern is exactly "[0-9]{N,}", the form masking and restoring
// use: such runs are found by a plain scan. 0 for any other pattern.
std::size_t digitRunMinimum(std::string_view pattern) {
  constexpr std::string_view kPrefix = "[0-9]{";
  constexpr std::string_view kSuffix = ",}";
  if (!pattern.starts_with(kPrefix) || !pattern.ends_with(kSuffix)) return 0;
  const auto digits = pattern.substr(kPrefix.size(), pattern.size() - kPrefix.size() - kSuffix.size());
  if (digits.empty() || digits.size() > 4) return 0;
  std::size_t minimum = 0;
  for (char c : digits) {
    if (!isDigit(c)) return 0;
    minimum = minimum * 10 + static_cast<std::size_t>(c - '0');
  }
  return minimum;
}

// Every run of at least `minimum` ASCII digits, in order. Text between runs
// is skipped eight bytes at a time.
std::vector<Span> digitRuns(std::string_view text, std::size_t minimum) {
  std::vector<Span> runs;
  const char* data = text.data();
  const std::size_t size = text.size();
  std::size_t i = 0;
  while (i < size) {
    if (!isDigit(data[i])) {
      i = detail::skipWords(text, i + 1, detail::holdsDigit);
      continue;
    }
    std::size_t j = i + 1;
    while (j < size && isDigit(data[j])) ++j;
    if (j - i >= minimum) runs.emplace_back(i, j - i);
    i = j;
  }
  return runs;
}

// The runs as a search over text[0, limit) finds them: those inside, and the
// one that crosses the limit cut there (when it is still long enough).
std::vector<Span> runsBefore(const std::vector<Span>& runs, std::size_t limit, std::size_t minimum) {
  std::vector<Span> inside;
  inside.reserve(runs.size());
  for (const auto& [offset, length] : runs) {
    if (offset + length <= limit) {
      inside.emplace_back(offset, length);
    } else if (offset < limit && limit - offset >= minimum) {
      inside.emplace_back(offset, limit - offset);
    }
  }
  return inside;
}

// Every non-empty match of the pattern in text[0, limit), in order.
std::vector<Span> patternMatches(const RE2& pattern, std::string_view text, std::size_t limit) {
  std::vector<Span> matches;
  const re2::StringPiece input(text.data(), text.size());
  std::size_t position = 0;
  re2::StringPiece match;
  while (position <= limit && pattern.Match(input, position, limit, RE2::UNANCHORED, &match, 1)) {
    const auto offset = static_cast<std::size_t>(match.data() - text.data());
    if (match.empty()) {
      position = offset + 1;
      continue;
    }
    matches.emplace_back(offset, match.size());
    position = offset + match.size();
  }
  return matches;
}

// Whether the text can be a JSON object once percent-decoded: one starts
// with "{" after blanks, or with an escape.
bool mayBeObject(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\n\r");
  return first != std::string_view::npos && (text[first] == '{' || text[first] == '%');
}

}  // namespace

QXTokenizer::QXTokenizer() : token_(randomStart()) {}

int64_t QXTokenizer::token() const {
  std::lock_guard lock(mutex_);
  return token_;
}

void QXTokenizer::setToken(int64_t token) {
  std::lock_guard lock(mutex_);
  token_ = token;
}

std::optional<std::map<std::string, std::string>> QXTokenizer::tokens() const {
  std::lock_guard lock(mutex_);
  return tokens_;
}

void QXTokenizer::setTokens(std::optional<std::map<std::string, std::string>> tokens) {
  std::lock_guard lock(mutex_);
  tokens_ = std::move(tokens);
  slotValid_ = false;
  slotValue_ = nullptr;
  values_.clear();
  if (tokens_) {
    for (const auto& [key, value] : *tokens_) ++values_[value].bound;
  }
}

std::string QXTokenizer::decode(std::string_view json) { return rewriteText(json, kMaskPattern, true); }

std::string QXTokenizer::encode(std::string_view json) { return rewriteText(json, kRestorePattern, false); }

std::string QXTokenizer::rewriteText(std::string_view json, std::string_view regex, bool decode) {
  // Only a JSON object has a "text" to rewrite; prose comes back at once.
  if (!mayBeObject(json)) return std::string(json);
  auto parsed = parseJSON(json);
  auto* object = parsed ? parsed->if_object() : nullptr;
  if (object == nullptr || object->empty()) return std::string(json);
  // Only a text "text" can be rewritten; any other object keeps its content.
  if (auto* text = object->if_contains("text"); text != nullptr && text->is_string()) {
    std::optional<std::string> updated;
    {
      std::lock_guard lock(mutex_);
      updated = updateLocked(text->get_string(), regex, decode);
    }
    if (updated) *text = *updated;
  }
  auto written = detail::writeJsonObject(*object, json.size());
  return written ? *written : std::string(json);
}

std::optional<std::string> QXTokenizer::updateStatement(std::optional<std::string_view> statement,
                                                        std::string_view regex, bool decode) {
  if (!statement) return std::nullopt;
  std::lock_guard lock(mutex_);
  auto updated = updateLocked(*statement, regex, decode);
  return updated ? std::move(*updated) : std::string(*statement);
}

std::optional<std::string> QXTokenizer::updateLocked(std::string_view statement, std::string_view regex, bool decode) {
  if (statement.empty()) return std::nullopt;
  // Masking leaves the last character out of the search on purpose: a run
  // that ends the text is matched without its last digit. Restoring reads it all.
  const std::size_t limit = decode ? withoutLastCharacter(statement) : statement.size();

  // `runs`: every match in the whole text; `matches`: those the search finds.
  std::vector<Span> runs;
  std::vector<Span> matches;
  if (const std::size_t minimum = digitRunMinimum(regex); minimum > 0) {
    runs = digitRuns(statement, minimum);
    matches = runsBefore(runs, limit, minimum);
  } else {
    RE2::Options options;
    options.set_case_sensitive(false);
    options.set_log_errors(false);
    const RE2 pattern(re2::StringPiece(regex.data(), regex.size()), options);
    if (!pattern.ok()) return std::nullopt;
    runs = patternMatches(pattern, statement, statement.size());
    matches = limit == statement.size() ? runs : patternMatches(pattern, statement, limit);
  }
  if (matches.empty()) return std::nullopt;

  // Every match asks for its replacement in order (minting or re-binding a
  // token each time); a text keeps the replacement it got first. Masking
  // keeps that first replacement in the value's own state (stamped with this
  // call's number), restoring in a map of its own.
  const uint64_t call = ++call_;
  std::unordered_map<std::string_view, std::string> restored;
  std::vector<const std::string*> chosen;  // per match
  chosen.reserve(matches.size());
  for (const auto& [offset, length] : matches) {
    const std::string_view text = statement.substr(offset, length);
    if (decode) {
      auto [state, token] = bindLocked(text);
      if (state->call != call) {
        state->call = call;
        state->first = *token;
      }
      chosen.push_back(&state->first);
    } else {
      auto found = restored.find(text);
      if (found == restored.end()) found = restored.emplace(text, extractValueLocked(std::string(text))).first;
      chosen.push_back(&found->second);
    }
  }
  // The replacement a matched text got, or null for a text no match had.
  auto replacementOf = [&](std::string_view text) -> const std::string* {
    if (decode) {
      const auto found = values_.find(text);
      return found != values_.end() && found->second.call == call ? &found->second.first : nullptr;
    }
    const auto found = restored.find(text);
    return found != restored.end() ? &found->second : nullptr;
  };

  // One pass over the text: each match is replaced, and so is every other
  // occurrence of a matched text (the run that ends the text included).
  // Where spans overlap, the one that starts first wins, the longer on a tie.
  std::string result;
  result.reserve(statement.size());
  std::size_t copied = 0;
  auto replace = [&](const Span& span, const std::string* replacement) {
    const auto& [offset, length] = span;
    if (offset < copied) return;
    if (replacement == nullptr) replacement = replacementOf(statement.substr(offset, length));
    if (replacement == nullptr) return;  // a run whose text was not matched
    result.append(statement.substr(copied, offset - copied));
    result.append(*replacement);
    copied = offset + length;
  };
  std::size_t m = 0;
  for (const auto& run : runs) {
    while (m < matches.size() && (matches[m].first < run.first ||
                                  (matches[m].first == run.first && matches[m].second > run.second))) {
      replace(matches[m], chosen[m]);
      ++m;
    }
    // A run that is a match itself needs no look-up.
    if (m < matches.size() && matches[m] == run) {
      replace(matches[m], chosen[m]);
      ++m;
    } else {
      replace(run, nullptr);
    }
  }
  for (; m < matches.size(); ++m) replace(matches[m], chosen[m]);
  result.append(statement.substr(copied));
  // The log shows the masked side: the result of masking, the statement as
  // written when restoring.
  detail::logFormat("tokened %@", decode ? std::string_view(result) : statement);
  return result;
}

std::string QXTokenizer::replaceValue(const std::string& value) {
  std::lock_guard lock(mutex_);
  return *bindLocked(value).second;
}

std::pair<QXTokenizer::ValueState*, const std::string*> QXTokenizer::bindLocked(std::string_view value) {
  auto found = values_.find(value);
  const bool seen = found != values_.end() && found->second.bound > 0;
  if (!tokens_) {
    tokens_.emplace();
    slotValid_ = false;
  } else if (!seen) {
    ++token_;
  }
  ValueState* state = found != values_.end() ? &found->second : &values_.try_emplace(std::string(value)).first->second;
  // The current number's entry is kept at hand: most calls land on it, and a
  // new number goes after all others (the hint makes that insertion cheap).
  if (!slotValid_ || slotToken_ != token_) {
    const std::size_t before = tokens_->size();
    slot_ = tokens_->try_emplace(tokens_->end(), std::to_string(token_), value);
    slotToken_ = token_;
    slotValid_ = true;
    if (tokens_->size() != before) {
      ++state->bound;
      slotValue_ = state;
      return {state, &slot_->first};
    }
    // The number was bound already (the host set the tokens or the counter).
    const auto holder = values_.find(slot_->second);
    slotValue_ = holder != values_.end() ? &holder->second : nullptr;
  }
  if (slotValue_ == state) return {state, &slot_->first};  // bound here already: nothing changes
  // The value bound to this number before loses its token.
  if (slotValue_ != nullptr && slotValue_->bound > 0) --slotValue_->bound;
  slot_->second = value;
  ++state->bound;
  slotValue_ = state;
  return {state, &slot_->first};
}

std::string QXTokenizer::extractValue(const std::string& key) const {
  std::lock_guard lock(mutex_);
  return extractValueLocked(key);
}

std::string QXTokenizer::extractValueLocked(const std::string& key) const {
  if (tokens_) {
    if (auto found = tokens_->find(key); found != tokens_->end()) return found->second;
  }
  return key;
}

}  // namespace quorvix
