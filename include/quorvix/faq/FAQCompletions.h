#pragma once
/// @file
/// The completion types of the configuration, FAQ, answer and like operations.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/core/QXError.h"

namespace quorvix {

class QXConfiguration;
class QXFAQGroup;
class QXLabel;
class QXQueryResult;
class FAQAnswer;
class QXLikeStateHandler;

/// Receives the widget configuration, or the error that stopped its fetch.
using QXConfigurationCompletion =
    std::function<void(std::shared_ptr<QXConfiguration> configuration, std::optional<QXError> error)>;
/// Receives a label's answers, or nothing after an error.
using QXLabelFAQCompletion = std::function<void(std::optional<std::vector<std::shared_ptr<QXQueryResult>>> answers)>;
/// Receives an answer, or the error; both absent when the reply held no answer.
using QXFAQAnswerCompletion = std::function<void(std::shared_ptr<FAQAnswer> answer, std::optional<QXError> error)>;
/// Receives the result's identifier, the action code and whether the service took the vote.
using QXLikeCompletion = std::function<void(std::optional<std::string> resultId, int32_t action, bool success)>;

}  // namespace quorvix
