#include "quorvix/conversation/QXPersonalInfo.h"

#include "quorvix/conversation/ClientCalls.h"

namespace quorvix {

std::shared_ptr<QXPersonalInfo> QXPersonalInfo::initWithSignature(std::string signature) {
  auto info = std::make_shared<QXPersonalInfo>();
  info->signature_ = std::move(signature);
  return info;
}

std::string QXPersonalInfo::personalInfoId() const { return extractSelector(signature_); }

std::vector<std::string> QXPersonalInfo::methodArgs() const { return extractArguments(signature_); }

}  // namespace quorvix
