#include "quorvix/engine/QXResponse.h"

#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>

#include "engine/TypedResults.h"

namespace quorvix {

void QXResponse::setParams(Json value) {
  if (!url_) return;
  auto parsed = boost::urls::parse_uri_reference(*url_);
  if (!parsed) return;
  const boost::urls::url_view url = *parsed;
  std::string_view path = url.encoded_path();
  while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  const auto slash = path.rfind('/');
  const std::string_view last = slash == std::string_view::npos ? path : path.substr(slash + 1);
  type_ = detail::typedResult(last, url.encoded_query(), std::move(value));
}

}  // namespace quorvix
