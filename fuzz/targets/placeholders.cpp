// Personal-information placeholders ("{{accountBalance(ButtonText:Show,a:b)}}")
// in a bot reply, resolved through a host that answers at once, on the
// caller's thread: with a value, with nothing (a button) or with a value that
// brings the placeholder back.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "FuzzInput.h"
#include "QuietLog.h"
#include "quorvix/conversation/QXChatEngineDelegate.h"
#include "quorvix/conversation/QXConversationalResponse.h"
#include "quorvix/conversation/QXPersonalInfo.h"
#include "quorvix/engine/Quorvix.h"

namespace {

using namespace quorvix;

/// A host that answers every placeholder synchronously; the answers follow
/// the bytes of the second input line.
class AnsweringHost : public QXChatEngineDelegate {
 public:
  std::string_view answers;
  std::size_t asked = 0;

  void shouldHandleMissingEntities(std::shared_ptr<QXConversationalResponse>, QXMissingEntitiesHandler) override {}

  bool shouldHandlePersonalInformation(std::shared_ptr<QXPersonalInfo> info) override {
    (void)info->personalInfoId();
    (void)info->methodArgs();
    const char choice = answers.empty() ? 'v' : answers[asked % answers.size()];
    ++asked;
    switch (choice % 3) {
      case 0:
        info->personalInfoCallback()(std::nullopt, nullptr);  // no value: a button
        break;
      case 1:
        info->personalInfoCallback()("{{" + info->signature() + "}}", nullptr);  // the placeholder again
        break;
      default:
        info->personalInfoCallback()("1234", nullptr);
        break;
    }
    // A second answer must change nothing.
    info->personalInfoCallback()("again", nullptr);
    return true;
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::quietLog();
  static const std::shared_ptr<Quorvix> engine = Quorvix::create();
  // First line: the reply's text; the rest: how the host answers.
  const auto parts = fuzz::pieces(fuzz::text(data, size), 2);
  (void)QXPersonalInfo::initWithSignature(std::string(parts[0]))->methodArgs();

  auto host = std::make_shared<AnsweringHost>();
  host->answers = parts[1];
  engine->setChatDelegate(host);
  JsonObject reply;
  reply["text"] = parts[0];
  reply["answersCaption"] = parts[0];
  auto response = QXConversationalResponse::initWithDictionary(std::move(reply));
  int completions = 0;
  engine->extractPrivateInfo(response, [&](auto, auto) { ++completions; });
  if (completions > 1) std::abort();  // every completion runs at most once
  engine->setChatDelegate({});
  return 0;
}
