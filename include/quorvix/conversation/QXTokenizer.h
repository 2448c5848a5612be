#pragma once
/// @file
/// Masking of long numbers in bot replies and their restoring in statements.

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace quorvix {

/// Masks account, card or policy numbers in the bot's replies: each distinct
/// run of six or more digits becomes a token (a six-digit number minted here)
/// and the tokenizer remembers what each token stands for; a token the user
/// writes back in a statement (runs of four or more digits) is restored to its
/// value before the statement is sent. The map only grows.
///
/// Both directions act on the "text" field of a JSON object only; anything
/// else passes through unchanged. Masking leaves the last character of a text
/// out of the search, so a run that ends the text is matched without its last
/// digit; yet every occurrence of a matched number is replaced, that run
/// included. Restoring reads the whole statement. Matching and replacing are
/// one linear pass over the text; log lines show tokens, never the values.
///
/// Safe to use from several threads.
class QXTokenizer {
 public:
  /// Starts the token counter at a random number in 200000...299999.
  QXTokenizer();
  QXTokenizer(const QXTokenizer&) = delete;
  QXTokenizer& operator=(const QXTokenizer&) = delete;

  /// The current token number.
  int64_t token() const;
  /// Replaces `token()`.
  void setToken(int64_t token);
  /// Token text -> the value it stands for; unset until the first token is minted.
  std::optional<std::map<std::string, std::string>> tokens() const;
  /// Replaces `tokens()`.
  void setTokens(std::optional<std::map<std::string, std::string>> tokens);

  /// Masks the "text" of a JSON object's text (runs of 6+ digits become
  /// tokens) and gives the object back as JSON text; anything else, or an
  /// empty object, comes back unchanged.
  std::string decode(std::string_view json);
  /// Restores tokens in the "text" of a JSON object's text (runs of 4+
  /// digits that are tokens become their values); anything else comes back unchanged.
  std::string encode(std::string_view json);
  /// Replaces each match of the case-insensitive pattern by `replaceValue`
  /// (decode, searching all but the last character) or `extractValue`
  /// (restore, searching the whole statement) of it, and every other
  /// occurrence of a matched text as a whole match of the pattern too. A
  /// text matched more than once takes its first replacement everywhere.
  /// Logs "tokened %@" with the masked side (the result when decoding, the
  /// statement when restoring) when anything matched; a pattern that does
  /// not compile matches nothing.
  std::optional<std::string> updateStatement(std::optional<std::string_view> statement, std::string_view regex,
                                             bool decode);
  /// Mints or reuses a token for the value and gives the token's text. The
  /// first value takes the current number; a value not seen before takes the
  /// next number; a value seen before is bound again to the current number
  /// (which the value bound to it before loses).
  std::string replaceValue(const std::string& value);
  /// The value the token text stands for, or the text itself.
  std::string extractValue(const std::string& key) const;

 private:
  // What the tokenizer knows of one value: how many tokens stand for it, and
  // the replacement it got first in the masking call numbered `call`.
  struct ValueState {
    std::size_t bound = 0;
    uint64_t call = 0;
    std::string first;
  };
  // Looks text up without making a string of it.
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
  };

  // Mints or re-binds a token for the value (see `replaceValue`); gives the
  // value's state and the token's text.
  std::pair<ValueState*, const std::string*> bindLocked(std::string_view value);
  std::string extractValueLocked(const std::string& key) const;
  std::optional<std::string> updateLocked(std::string_view statement, std::string_view regex, bool decode);
  std::string rewriteText(std::string_view json, std::string_view regex, bool decode);

  mutable std::mutex mutex_;
  int64_t token_;
  std::optional<std::map<std::string, std::string>> tokens_;
  // The entry of `slotToken_` in `tokens_` and the state of its value, while `slotValid_`.
  std::map<std::string, std::string>::iterator slot_;
  ValueState* slotValue_ = nullptr;
  int64_t slotToken_ = 0;
  bool slotValid_ = false;
  // Every value ever bound, so "seen before" is one look-up; entries stay
  // (with `bound` 0) when a value loses its last token, and never move.
  std::unordered_map<std::string, ValueState, TextHash, std::equal_to<>> values_;
  // Numbers the masking calls.
  uint64_t call_ = 0;
};

}  // namespace quorvix
