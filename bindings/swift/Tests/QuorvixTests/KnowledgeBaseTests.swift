import Foundation
import Quorvix
import Testing

extension QuorvixTests {
    /// The knowledge-base side of the engine against the sandbox service.
    @Suite struct KnowledgeBase {
        let engine: Engine

        init() throws {
            try Sandbox.use()
            engine = try Engine(account: Sandbox.account)
        }

        @Test func configurationAndFAQ() async throws {
            let configuration = try await engine.configuration()
            #expect(configuration.navBar?["title"]?.stringValue == "Acme Support")
            #expect(configuration.statusBarColor == "#FF8000")
            #expect(configuration.languageCode == "en")

            let groups = try await engine.faq()
            #expect(groups.first?.title == "Getting started")
            #expect(groups.first?.data.map(\.resultId) == ["1001", "1008", "1004", "1016", "1006"])
        }

        @Test func searchCarriesExtraDataAndChannels() async throws {
            let reply = try await engine.search("reset")
            let lights = try #require(reply.answerList.first { $0.resultId == "1006" })
            guard case .array(let rows)? = lights.body?.extraData?["table"] else {
                Issue.record("no extra data table in \(String(describing: lights.body))")
                return
            }
            #expect(rows.first?["colour"]?.stringValue == "blue")
            #expect(rows.first?["meaning"]?.stringValue == "online")

            let phone = try #require(reply.answerList.first?.channeling.first { $0.kind == "phone" })
            #expect(phone.phoneNumber == "+44 800 555 0199")

            // After a dislike the article offers the chat too, with the service's own spelling.
            let channels = try await engine.channels(for: "1003", likeState: 2)
            let chat = try #require(channels.first { $0.kind == "chat" })
            #expect(chat.accontNum == "AC-4711")
            #expect(channels.first { $0.kind == "custom URL" }?.linkUrl == "https://community.acme.example/")

            // A hit of the latest search can be escalated through its channel.
            let report = try await engine.reportChannel(of: "1006", index: 0)
            #expect(report.form == "escalate")
            #expect(report.channel == phone)
        }

        @Test func suggestionsCarryTheirStyledRuns() async throws {
            let suggestions = try await engine.suggest("rou")
            #expect(suggestions.query == "rou")
            #expect(!suggestions.suggestions.isEmpty)
            for suggestion in suggestions.suggestions {
                // The runs cover the words end to end; the matched word is the bold one.
                var next = 0
                for run in suggestion.runs {
                    #expect(run.location == next, "\(suggestion.text)")
                    next = run.location + run.length
                }
                #expect(next == suggestion.text.trimmingCharacters(in: .whitespaces).utf16.count, "\(suggestion.text)")
                let bold = suggestion.runs.filter { $0.font.bold }.map { suggestion.substring(of: $0).lowercased() }
                #expect(bold == ["router"], "\(suggestion.text)")
            }
        }

        @Test func answersComeFromTheStoreAndLikesAreKept() async throws {
            let fetched = try await engine.answer("1004")
            #expect(fetched.title == "How do I change my Wi-Fi password?")
            #expect(!(fetched.body?.articleBody?.isEmpty ?? true))

            // The service does not know this answer: it can only come from the store.
            try Engine.store(StoredAnswer(resultId: "swift-local-1", title: "Kept here", body: "From the store"),
                             as: "swift-local-1")
            let stored = try await engine.answer("swift-local-1")
            #expect(stored.title == "Kept here")

            #expect(engine.likeState("1004") == nil)
            engine.setLikeState("1004", liked: true)
            #expect(engine.likeState("1004") == true)
            let receipt = try await engine.like("1004", liked: true)
            #expect(receipt.resultId == "1004" && receipt.action == 1 && receipt.success)
        }
    }
}
