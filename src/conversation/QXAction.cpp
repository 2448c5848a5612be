#include "quorvix/conversation/QXAction.h"

#include <boost/json/serialize.hpp>

namespace quorvix {

std::string QXAction::description() const {
  std::string text;
  if (actionId_) text += "\n actionId:" + *actionId_;
  if (text_) text += "\n text:" + *text_;
  if (userInfo_) text += "\n userInfo:" + boost::json::serialize(*userInfo_);
  return text;
}

}  // namespace quorvix
