#include "quorvix/faq/FAQAnswer.h"

#include "configuration/JsonReading.h"

namespace quorvix {

void FAQAnswer::inflate(const JsonObject& params) {
  QXQueryResult::inflate(params);
  if (!title()) setTitle(detail::textAt(params, "label"));
  setResultId(detail::textAt(params, "objectId"));
}

}  // namespace quorvix
