#include "Reply.h"

#include <boost/json.hpp>
#include <cmath>
#include <cstdint>

namespace quorvix::sandbox {

Reply Reply::json(const boost::json::value& value, int status) {
  return Reply{status, boost::json::serialize(value), std::string(kJsonContentType)};
}

Reply Reply::error(int status, std::string_view message) {
  return json(boost::json::object{{"status", status}, {"message", message}}, status);
}

boost::json::value Reply::seconds(double value) {
  double whole = 0;
  if (std::modf(value, &whole) == 0.0 && std::fabs(whole) < 1e15) {
    return static_cast<std::int64_t>(whole);
  }
  return value;
}

Reply invalidSessionReply() { return Reply::error(400, "Invalid session"); }

}  // namespace quorvix::sandbox
