// What large or crafted replies cost: the search reply model against a bare
// parse, masking long numbers, and masking when there is nothing to mask.
// Throughput figures are bytes of input per second.
#include <benchmark/benchmark.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <random>
#include <string>

#include "engine/JsonParse.h"
#include "engine/TypedResults.h"
#include "quorvix/conversation/QXTokenizer.h"
#include "quorvix/platform/Platform.h"

namespace {

constexpr std::size_t kMegabyte = 1024 * 1024;

// A search reply of about `size` bytes: hits with a title, a summary carrying
// extra-data mark-up, channels and context selections, and a context.
std::string searchReply(std::size_t size) {
  boost::json::array answers;
  std::string body(600, 'x');
  for (std::size_t i = 0; i < body.size(); i += 7) body[i] = ' ';
  std::size_t written = 0;
  for (int i = 0; written < size; ++i) {
    boost::json::object hit{
        {"id", i},
        {"title", "How to reset the router " + std::to_string(i)},
        {"summary", body + "<quorvixextradata>{\"k\":" + std::to_string(i) + "}</quorvixextradata>"},
        {"likes", "3"},
        {"titleAndBodyHash", "d41d8cd98f00b204e9800998ecf8427e"},
        {"contextSelectionOnly", i % 2 == 0},
        {"contextSelection", boost::json::array{1, 2}},
        {"rechanneling",
         boost::json::array{boost::json::object{{"buttonText", "Call us"}, {"type", 5}, {"channel", 5}},
                            boost::json::object{{"buttonText", "Write"}, {"actionEsc", 0}, {"channel", 1}}}}};
    written += boost::json::serialize(hit).size();
    answers.push_back(std::move(hit));
  }
  boost::json::object reply{
      {"answers", std::move(answers)},
      {"requestId", 42},
      {"kbLanguageCode", "en"},
      {"context", boost::json::object{{"v", 1},
                                      {"values", boost::json::array{boost::json::object{{"id", 1}, {"name", "M2"}},
                                                                    boost::json::object{{"id", 2}, {"name", "M3"}}}}}}};
  return boost::json::serialize(reply);
}

// About `size` bytes of prose with many numbers: short ones left alone, long
// ones (6 to 16 digits) drawn from a pool, so the same number comes back.
std::string numberedText(std::size_t size) {
  std::mt19937 random(7);
  std::vector<std::string> pool;
  for (int i = 0; i < 2000; ++i) {
    std::string number;
    const auto digits = 6 + random() % 11;
    for (unsigned d = 0; d < digits; ++d) number.push_back(static_cast<char>('0' + random() % 10));
    pool.push_back(std::move(number));
  }
  static const char* const kWords[] = {"your", "account", "card", "was", "charged", "on", "policy", "ref", "and", "the"};
  std::string text;
  text.reserve(size + 64);
  while (text.size() < size) {
    for (int w = 0; w < 6; ++w) text.append(kWords[random() % 10]).push_back(' ');
    text.append(std::to_string(random() % 10000)).append(" ");
    text.append(pool[random() % pool.size()]).append(", ");
  }
  text.resize(size);
  return text;
}

std::string asReply(const std::string& text) { return boost::json::serialize(boost::json::object{{"text", text}}); }

void BM_BareParse(benchmark::State& state) {
  const std::string reply = searchReply(kMegabyte);
  for (auto _ : state) benchmark::DoNotOptimize(boost::json::parse(reply));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * reply.size()));
}

void BM_SearchReplyModel(benchmark::State& state) {
  const std::string reply = searchReply(kMegabyte);
  for (auto _ : state) {
    auto parsed = quorvix::detail::parseJson(reply);
    benchmark::DoNotOptimize(
        quorvix::detail::typedResult("q.js", "", std::move(std::get<quorvix::Json>(parsed))));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * reply.size()));
}

// Masking a statement of `range(0)` MB with many numbers (the masking step itself).
void BM_MaskingMixedText(benchmark::State& state) {
  quorvix::platform::setLogSink([](std::string_view) {});
  const std::string text = numberedText(static_cast<std::size_t>(state.range(0)) * kMegabyte);
  quorvix::QXTokenizer tokenizer;
  for (auto _ : state) benchmark::DoNotOptimize(tokenizer.updateStatement(text, "[0-9]{6,}", true));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

// The same through `decode`, with the text inside a reply object.
void BM_DecodeMixedText(benchmark::State& state) {
  quorvix::platform::setLogSink([](std::string_view) {});
  const std::string reply = asReply(numberedText(static_cast<std::size_t>(state.range(0)) * kMegabyte));
  quorvix::QXTokenizer tokenizer;
  for (auto _ : state) benchmark::DoNotOptimize(tokenizer.decode(reply));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * reply.size()));
}

void BM_MaskingOneDigitRun(benchmark::State& state) {
  quorvix::platform::setLogSink([](std::string_view) {});
  const std::string reply = asReply(std::string(10 * kMegabyte, '7'));
  quorvix::QXTokenizer tokenizer;
  for (auto _ : state) benchmark::DoNotOptimize(tokenizer.decode(reply));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * reply.size()));
}

// `decode` of 10 MB holding no long number: plain prose (the usual reply
// text), and a reply object.
void BM_DecodeNothingToMask(benchmark::State& state) {
  quorvix::platform::setLogSink([](std::string_view) {});
  std::string text = numberedText(10 * kMegabyte);
  for (char& c : text) {
    if (c >= '0' && c <= '9') c = 'n';
  }
  const std::string input = state.range(0) == 0 ? text : asReply(text);
  quorvix::QXTokenizer tokenizer;
  for (auto _ : state) benchmark::DoNotOptimize(tokenizer.decode(input));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * input.size()));
  state.SetLabel(state.range(0) == 0 ? "prose" : "reply object");
}

BENCHMARK(BM_BareParse)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SearchReplyModel)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MaskingMixedText)->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeMixedText)->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MaskingOneDigitRun)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeNothingToMask)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
