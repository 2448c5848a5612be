#include "quorvix/faq/QXLabel.h"

#include "configuration/JsonReading.h"

namespace quorvix {

void QXLabel::inflate(const JsonObject& params) {
  QXFAQGroup::inflate(params);
  // The icon is kept as sent: an absolute URL, or a path relative to the service.
  std::optional<std::string> icon;
  if (const Json* value = params.if_contains("icon"); value != nullptr && value->is_string()) {
    icon = std::string(value->get_string());
  }
  std::lock_guard lock(mutex_);
  context_ = detail::textAt(params, "context");
  labelName_ = detail::textAt(params, "labelName");
  iconUrl_ = std::move(icon);
  labelId_ = detail::textAt(params, "id");
}

std::shared_ptr<QXLabel> QXLabel::copy() const {
  auto label = std::make_shared<QXLabel>();
  std::lock_guard lock(mutex_);
  label->labelId_ = labelId_;
  label->labelName_ = labelName_;
  label->context_ = context_;
  label->iconData_ = iconData_;
  label->iconUrl_ = iconUrl_;
  return label;
}

std::optional<std::string> QXLabel::labelId() const {
  std::lock_guard lock(mutex_);
  return labelId_;
}

void QXLabel::setLabelId(std::optional<std::string> labelId) {
  std::lock_guard lock(mutex_);
  labelId_ = std::move(labelId);
}

std::optional<std::string> QXLabel::context() const {
  std::lock_guard lock(mutex_);
  return context_;
}

std::optional<std::string> QXLabel::labelName() const {
  std::lock_guard lock(mutex_);
  return labelName_;
}

std::optional<std::string> QXLabel::iconUrl() const {
  std::lock_guard lock(mutex_);
  return iconUrl_;
}

std::optional<std::string> QXLabel::iconData() const {
  std::lock_guard lock(mutex_);
  return iconData_;
}

void QXLabel::setIconData(std::optional<std::string> bytes) {
  std::lock_guard lock(mutex_);
  iconData_ = std::move(bytes);
}

}  // namespace quorvix
