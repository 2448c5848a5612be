// The configuration document ("cnf.json") with its FAQ groups, labels and
// conversation settings, as the service sends it.

#include <cstddef>
#include <cstdint>
#include <variant>

#include "FuzzInput.h"
#include "QuietLog.h"
#include "engine/JsonParse.h"
#include "quorvix/configuration/ConversationSettings.h"
#include "quorvix/configuration/QXConfiguration.h"
#include "quorvix/faq/QXFAQGroup.h"
#include "quorvix/faq/QXLabel.h"
#include "quorvix/search/QXQueryResult.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace quorvix;
  fuzz::quietLog();
  const auto parsed = detail::parseJson(fuzz::text(data, size));
  const auto* value = std::get_if<Json>(&parsed);
  if (value == nullptr) return 0;
  const auto configuration = QXConfiguration::initWithParams(value->if_object());
  if (!configuration) return 0;
  (void)configuration->params();
  (void)configuration->statusBarColor();
  (void)configuration->navBar();
  (void)configuration->title();
  (void)configuration->searchBar();
  (void)configuration->autoComplete();
  (void)configuration->content();
  (void)configuration->like();
  (void)configuration->negativeFeedback();
  (void)configuration->channeling();
  (void)configuration->logo();
  (void)configuration->isContextDependent();
  (void)configuration->useLabels();
  if (const auto settings = configuration->conversationSettings()) (void)settings;
  fuzz::each(configuration->faqs(), [](const std::shared_ptr<QXFAQGroup>& group) {
    if (!group) return;
    (void)group->title();
    (void)group->behavior();
    fuzz::each(group->data(), [](const std::shared_ptr<QXQueryResult>& result) {
      if (result) (void)result->title();
    });
    (void)group->parse();
  });
  fuzz::each(configuration->labels(), [](const std::shared_ptr<QXLabel>& label) {
    if (!label) return;
    (void)label->labelId();
    (void)label->labelName();
    (void)label->context();
    (void)label->iconUrl();
    (void)label->copy();
  });
  return 0;
}
