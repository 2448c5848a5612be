// A C++ host: prepares the engine for an account, searches, reads an answer
// and talks to the bot. Run it against the sandbox service:
//   quorvix-sandbox --port 8080 &   then   ./host http://localhost:8080
#include <chrono>
#include <cstdlib>
#include <future>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include <quorvix/conversation/QXConversationalResponse.h>
#include <quorvix/engine/Quorvix.h>
#include <quorvix/faq/FAQAnswer.h>
#include <quorvix/platform/Platform.h>
#include <quorvix/search/QXSearchResponse.h>
#include <quorvix/search/SearchAnswer.h>

using namespace quorvix;

// Completions run on the engine's threads; the host waits for each with a promise.
template <typename T>
std::optional<T> await(std::future<T> future) {
  if (future.wait_for(std::chrono::seconds(10)) != std::future_status::ready) return std::nullopt;
  return future.get();
}

int main(int argc, char** argv) {
  const char* service = argc > 1 ? argv[1] : std::getenv("QUORVIX_SERVICE");
  if (service != nullptr) {  // otherwise the production hosts
    auto hosts = QXServiceHosts::fromServiceBase(service);
    if (auto* error = std::get_if<QXError>(&hosts)) {
      std::cerr << "bad service: " << describe(*error) << "\n";
      return 1;
    }
    platform::setServiceHosts(std::get<QXServiceHosts>(hosts));
  }

  auto params = std::make_shared<AccountParams>();
  params->setAccount("acme");
  params->setKnowledgeBase("support");
  params->setApiKey("demo-key-7f3a");
  auto engine = Quorvix::create();
  engine->prepareWithAccountParams(params);

  // Search the knowledge base.
  std::promise<std::string> searched;
  engine->searchText("router password", [&searched](std::shared_ptr<QXSearchResponse> response,
                                                     std::optional<QXError> error) {
    if (error || !response || response->answerList().empty()) return searched.set_value("");
    searched.set_value(response->answerList().front()->resultId().value_or(""));
  });
  const auto firstHit = await(searched.get_future());
  if (!firstHit || firstHit->empty()) {
    std::cerr << "search failed\n";
    return 1;
  }

  // Read that answer.
  std::promise<std::string> read;
  engine->fetchFAQAnswer(*firstHit, std::nullopt, [&read](std::shared_ptr<FAQAnswer> answer, std::optional<QXError>) {
    read.set_value(answer ? answer->title().value_or("") : "");
  });
  std::cout << "answer " << *firstHit << ": " << await(read.get_future()).value_or("(none)") << "\n";

  // Talk to the bot: open a conversation, then send a statement.
  std::promise<std::optional<std::string>> opened;
  engine->createConversationWithCompletion([&opened](std::optional<std::string> id, std::optional<QXError>) {
    opened.set_value(id);
  });
  const auto conversation = await(opened.get_future()).value_or(std::nullopt);
  if (!conversation) {
    std::cerr << "no conversation\n";
    return 1;
  }
  std::promise<std::string> replied;
  engine->conversationStatement(R"({"text":"hi"})", false, conversation,
                                [&replied](std::shared_ptr<QXConversationalResponse> reply, std::optional<QXError>) {
                                  replied.set_value(reply ? reply->text().value_or("") : "(no reply)");
                                });
  std::cout << "bot: " << await(replied.get_future()).value_or("(no answer)") << "\n";
  return 0;
}
