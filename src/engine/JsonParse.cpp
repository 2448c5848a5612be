#include "engine/JsonParse.h"

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parser.hpp>

namespace quorvix::detail {

std::variant<std::monostate, Json, QXError> parseJson(std::string_view text) {
  if (text.empty()) return std::monostate{};
  boost::json::parse_options options;
  options.max_depth = kMaxJsonDepth;
  // Replies are read whole and dropped whole: one arena per reply parses
  // about twice as fast as the general-purpose allocator.
  boost::json::parser parser(boost::json::storage_ptr(), options);
  parser.reset(boost::json::make_shared_resource<boost::json::monotonic_resource>());
  boost::system::error_code ec;
  parser.write(text.data(), text.size(), ec);
  if (ec) {
    return QXError{errors::kJSONDomain, errors::kJSONParseError,
                   {{"NSDebugDescription", "The data couldn't be read because it isn't in the correct format: " + ec.message()}}};
  }
  return parser.release();
}

}  // namespace quorvix::detail
