// How the engine reads numbers and text out of JSON values the service sent,
// whatever their JSON type.
#include <boost/json/serialize.hpp>
#include <charconv>
#include <climits>
#include <cmath>

#include "engine/Helpers.h"
#include "engine/Text.h"

namespace quorvix {
namespace {

int64_t clampToInt64(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 9.2233720368547758e18) return INT64_MAX;
  if (value <= -9.2233720368547758e18) return INT64_MIN;
  return static_cast<int64_t>(value);
}

}  // namespace

int64_t integerValue(const Json& value) {
  switch (value.kind()) {
    case boost::json::kind::int64:
      return value.get_int64();
    case boost::json::kind::uint64:
      return value.get_uint64() > static_cast<uint64_t>(INT64_MAX) ? INT64_MAX : static_cast<int64_t>(value.get_uint64());
    case boost::json::kind::double_:
      return clampToInt64(value.get_double());
    case boost::json::kind::bool_:
      return value.get_bool() ? 1 : 0;
    case boost::json::kind::string:
      return detail::leadingInteger(value.get_string(), INT64_MIN, INT64_MAX);
    default:
      return 0;
  }
}

double doubleValue(const Json& value) {
  switch (value.kind()) {
    case boost::json::kind::int64:
      return static_cast<double>(value.get_int64());
    case boost::json::kind::uint64:
      return static_cast<double>(value.get_uint64());
    case boost::json::kind::double_:
      return value.get_double();
    case boost::json::kind::bool_:
      return value.get_bool() ? 1 : 0;
    case boost::json::kind::string:
      return detail::leadingDouble(value.get_string());
    default:
      return 0;
  }
}

std::string describe(const Json& value) {
  switch (value.kind()) {
    case boost::json::kind::string:
      return std::string(value.get_string());
    case boost::json::kind::int64:
      return std::to_string(value.get_int64());
    case boost::json::kind::uint64:
      return std::to_string(value.get_uint64());
    case boost::json::kind::double_: {
      char buffer[32];
      auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value.get_double());
      return ec == std::errc() ? std::string(buffer, end) : std::string("0");
    }
    case boost::json::kind::bool_:
      return value.get_bool() ? "1" : "0";
    case boost::json::kind::null:
      return "<null>";
    default:
      return boost::json::serialize(value);
  }
}

}  // namespace quorvix
