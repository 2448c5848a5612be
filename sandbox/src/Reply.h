#pragma once
/// @file
/// What an endpoint answers.

#include <boost/json/value.hpp>
#include <string>
#include <string_view>

namespace quorvix::sandbox {

/// The content type of every JSON answer.
inline constexpr std::string_view kJsonContentType = "application/json; charset=utf-8";

/// An HTTP answer: status, body and content type.
struct Reply {
  int status = 200;
  std::string body;
  std::string contentType{kJsonContentType};

  /// `value` serialized as the body of a JSON answer.
  static Reply json(const boost::json::value& value, int status = 200);
  /// The service's error shape: {"status":N,"message":"..."} with HTTP status N.
  static Reply error(int status, std::string_view message);
  /// A JSON number for a count of seconds: an integer when it is whole ("600", not "6E2").
  static boost::json::value seconds(double value);
};

/// The answer to a request whose "sid" is missing, unknown or expired.
Reply invalidSessionReply();

}  // namespace quorvix::sandbox
