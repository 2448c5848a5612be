#pragma once
/// @file
/// How results and errors are printed: aligned text for people, one JSON
/// document per line with --json.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "json/ModelJson.h"
#include "quorvix/core/Json.h"
#include "quorvix/core/QXError.h"
#include "tool/Console.h"

namespace quorvix::cli {

/// One result as a person reads it: an optional heading, then label/value
/// rows whose values line up.
struct TextResult {
  std::string heading;
  std::vector<std::pair<std::string, std::string>> rows;
};

/// The text of a result: the heading on its own line and the rows indented
/// under it, or the rows alone when there is no heading; each line ends in a newline.
std::string formatText(const TextResult& result);

/// {"error": {"domain": ..., "code": ..., "userInfo": {...}}}
using documents::errorJson;
/// "error: DOMAIN CODE" and then one "  key: value" line per user-information entry.
std::string formatError(const QXError& error);
/// A one-line reading of an error for messages: its localized description or
/// "Description" when it has one, else "DOMAIN CODE".
std::string errorMessage(const QXError& error);

/// Seconds as people write them: "30", "2.5".
std::string formatSeconds(double seconds);
/// A number as JSON: whole numbers as integers (10, not 1E1), others as doubles.
inline Json jsonNumber(double value) { return documents::number(value); }

/// Prints results and errors in the chosen form.
class Output {
 public:
  Output(Console& console, bool json) : console_(console), json_(json) {}

  bool json() const { return json_; }
  Console& console() { return console_; }

  /// A result on stdout: `text` for people, `json` with --json.
  void result(const TextResult& text, const JsonObject& json);
  /// An error the engine reported: on stderr for people, as an error document on stdout with --json.
  void engineError(const QXError& error);
  /// "no answer within N s" on stderr.
  void timedOut(double seconds);
  /// "quorvix: TEXT" on stderr: usage errors and other problems of the tool itself.
  void message(std::string_view text);

 private:
  Console& console_;
  bool json_;
};

}  // namespace quorvix::cli
