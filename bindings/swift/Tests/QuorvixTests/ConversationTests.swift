import Foundation
import Quorvix
import Testing

/// A host's chat delegate that records the questions it was asked.
private final class RecordingDelegate: ChatDelegate, @unchecked Sendable {
    // Guarded by `lock`.
    private let lock = NSLock()
    private var asked: [[String]] = []
    private var personal: [String] = []

    var entityQuestions: [[String]] { lock.withLock { asked } }
    var personalQuestions: [String] { lock.withLock { personal } }

    func missingEntities(for reply: BotReply) async -> [Entity]? {
        lock.withLock { asked.append((reply.missingEntities ?? []).compactMap(\.type)) }
        return [Entity(type: "number", value: "250", kind: "amount"),
                Entity(type: "date", value: "2026-12-01", kind: "date")]
    }

    func personalInformation(_ question: PersonalInformationQuestion) async -> String? {
        lock.withLock { personal.append(question.personalInfoId ?? "") }
        return "1,234.56 EUR"
    }
}

extension QuorvixTests {
    @Suite struct Conversation {
        @Test func aRoundWithAMissingEntityPersonalInformationAndAMaskedNumber() async throws {
            try Sandbox.use()
            let engine = try Engine(account: Sandbox.account)
            let delegate = RecordingDelegate()
            engine.setChatDelegate(delegate)

            let conversation = try await engine.createConversation()
            #expect(!conversation.isEmpty)

            let greeting = try await engine.say("hi")
            #expect(greeting?.quickOptions.first?.postback == "transfer")

            let transfer = try await engine.say("transfer")
            #expect(delegate.entityQuestions == [["number", "date"]])
            #expect(transfer?.text?.hasPrefix("Done: 250 will be transferred on 2026-12-01") == true,
                    "\(transfer?.text ?? "no reply")")

            let balance = try await engine.say("balance")
            #expect(delegate.personalQuestions == ["accountBalance"])
            #expect(balance?.text?.contains("1,234.56 EUR") == true, "\(balance?.text ?? "no reply")")

            // The card and account numbers never reach the host; the reply is JSON text.
            let card = try #require(try await engine.say("card"))
            let shown = try #require(card.displayText)
            #expect(shown.hasPrefix("Your card "), "\(shown)")
            #expect(!shown.contains("4111111111111111"), "\(shown)")
            #expect(!shown.contains("99887766554"), "\(shown)")
        }
    }
}
