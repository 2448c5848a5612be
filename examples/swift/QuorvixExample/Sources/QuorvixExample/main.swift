// A Swift host: searches, reads an answer and talks to the bot.
//
//     swift run QuorvixExample http://localhost:8080
import Foundation
import Quorvix

/// Supplies the transfer's amount and date when the bot asks for them.
final class Host: ChatDelegate {
    func missingEntities(for reply: BotReply) async -> [Entity]? {
        [Entity(type: "number", value: "250", kind: "amount"), Entity(type: "date", value: "2026-12-01", kind: "date")]
    }
}

let service = CommandLine.arguments.dropFirst().first ?? ProcessInfo.processInfo.environment["QUORVIX_SERVICE"]
do {
    if let service { try Quorvix.setService(service) }
    print("quorvix \(Quorvix.version)")

    // README: begin
    let engine = try Engine(account: Account(account: "acme", knowledgeBase: "support", apiKey: "demo-key-7f3a"))
    let hits = try await engine.search("router password").answerList
    for hit in hits.prefix(3) {
        print("\(hit.resultId): \(hit.title ?? "")")
    }
    let answer = try await engine.answer(hits[0].resultId)
    print(answer.body?.articleBody?.prefix(120) ?? "")

    engine.setChatDelegate(Host())
    try await engine.createConversation()
    print("bot:", try await engine.say("hi")?.text ?? "")
    print("bot:", try await engine.say("transfer")?.text ?? "")
    // README: end
} catch let error as QuorvixError {
    print("error: \(error)")
    exit(1)
}
