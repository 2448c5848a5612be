#include "quorvix/conversation/QXTokenizer.h"

#include <re2/re2.h>

#include <random>
#include <utility>
#include <vector>

#include "platform/Log.h"
#include "quorvix/engine/Helpers.h"

namespace quorvix {

namespace {

constexpr std::string_view kMaskPattern = "[0-9]{6,}";
constexpr std::string_view kRestorePattern = "[0-9]{4,}";

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
  boundValues_.clear();
  if (tokens_) {
    for (const auto& [key, value] : *tokens_) ++boundValues_[value];
  }
}

std::string QXTokenizer::decode(std::string_view json) { return rewriteText(json, kMaskPattern, true); }

std::string QXTokenizer::encode(std::string_view json) { return rewriteText(json, kRestorePattern, false); }

std::string QXTokenizer::rewriteText(std::string_view json, std::string_view regex, bool decode) {
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
  auto written = inJSON(*object);
  return written ? *written : std::string(json);
}

std::optional<std::string> QXTokenizer::updateStatement(std::optional<std::string_view> statement,
                                                        std::string_view regex, bool decode) {
  if (!statement) return std::nullopt;
  std::lock_guard lock(mutex_);
  return updateLocked(*statement, regex, decode);
}

std::optional<std::string> QXTokenizer::updateLocked(std::string_view statement, std::string_view regex, bool decode) {
  if (statement.empty()) return std::string(statement);
  RE2::Options options;
  options.set_case_sensitive(false);
  options.set_log_errors(false);
  const RE2 pattern(re2::StringPiece(regex.data(), regex.size()), options);
  if (!pattern.ok()) return std::string(statement);

  // The last character is left out of the search on purpose: a run that ends
  // the text is matched without its last digit.
  const std::size_t limit = withoutLastCharacter(statement);
  const re2::StringPiece input(statement.data(), statement.size());
  std::vector<std::pair<std::size_t, std::size_t>> matches;  // offset, length
  std::size_t position = 0;
  re2::StringPiece match;
  while (position <= limit && pattern.Match(input, position, limit, RE2::UNANCHORED, &match, 1)) {
    const auto offset = static_cast<std::size_t>(match.data() - statement.data());
    if (match.empty()) {
      position = offset + 1;
      continue;
    }
    matches.emplace_back(offset, match.size());
    position = offset + match.size();
  }
  if (matches.empty()) return std::string(statement);

  // Every match asks for its replacement in order (minting or re-binding a
  // token each time); a text that occurs again keeps the replacement it got
  // first, as replacing all its occurrences at once would give.
  std::unordered_map<std::string_view, std::string> replacements;
  std::string result;
  result.reserve(statement.size());
  std::size_t copied = 0;
  for (const auto& [offset, length] : matches) {
    const std::string_view text = statement.substr(offset, length);
    std::string replacement = decode ? replaceValueLocked(std::string(text)) : extractValueLocked(std::string(text));
    const auto& chosen = replacements.try_emplace(text, std::move(replacement)).first->second;
    result.append(statement.substr(copied, offset - copied));
    result.append(chosen);
    copied = offset + length;
  }
  result.append(statement.substr(copied));
  detail::logFormat("tokened %@", result);
  return result;
}

std::string QXTokenizer::replaceValue(const std::string& value) {
  std::lock_guard lock(mutex_);
  return replaceValueLocked(value);
}

std::string QXTokenizer::replaceValueLocked(const std::string& value) {
  if (!tokens_) {
    tokens_.emplace();
  } else if (boundValues_.find(value) == boundValues_.end()) {
    ++token_;
  }
  auto key = std::to_string(token_);
  auto [slot, inserted] = tokens_->try_emplace(key, value);
  if (!inserted) {
    // The value bound to this number before loses its token.
    auto previous = boundValues_.find(slot->second);
    if (previous != boundValues_.end() && --previous->second == 0) boundValues_.erase(previous);
    slot->second = value;
  }
  ++boundValues_[value];
  return key;
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
