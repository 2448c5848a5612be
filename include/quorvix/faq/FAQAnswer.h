#pragma once
/// @file
/// One FAQ answer.

#include <memory>

#include "quorvix/search/QXQueryResult.h"

namespace quorvix {

/// An article result as the FAQ endpoints send it: the title falls back to
/// "label", and the identifier is always "objectId".
class FAQAnswer : public QXQueryResult {
 public:
  /// An answer read from `params`, or nothing when it is absent.
  static std::shared_ptr<FAQAnswer> initWithParams(const JsonObject* params) { return create<FAQAnswer>(params); }
  /// Reads the article fields, then "label" when there was no "title", then
  /// "objectId" as the identifier (absent when the key is missing).
  void inflate(const JsonObject& params) override;
};

}  // namespace quorvix
