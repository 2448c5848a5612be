#include "engine/JsonParse.h"

#include <boost/json/parser.hpp>

namespace quorvix::detail {

std::variant<std::monostate, Json, QXError> parseJson(std::string_view text) {
  if (text.empty()) return std::monostate{};
  boost::json::parse_options options;
  options.max_depth = kMaxJsonDepth;
  // The default allocator, not an arena per reply: values of a reply end up in
  // models that hosts copy on any thread, and an arena is not thread-safe.
  boost::json::parser parser(boost::json::storage_ptr(), options);
  boost::system::error_code ec;
  parser.write(text.data(), text.size(), ec);
  if (ec) {
    return QXError{errors::kJSONDomain, errors::kJSONParseError,
                   {{"NSDebugDescription", "The data couldn't be read because it isn't in the correct format: " + ec.message()}}};
  }
  return parser.release();
}

}  // namespace quorvix::detail
