import Foundation
import Quorvix
import XCTest

/// The knowledge-base side of the engine against the sandbox service.
final class KnowledgeBaseTests: XCTestCase {
    private var engine: Engine!

    override func setUpWithError() throws {
        try Sandbox.use()
        engine = try Engine(account: Sandbox.account)
    }

    override func tearDown() {
        engine = nil
    }

    func testConfigurationAndFAQ() async throws {
        let configuration = try await engine.configuration()
        XCTAssertEqual(configuration.navBar?["title"]?.stringValue, "Acme Support")
        XCTAssertEqual(configuration.statusBarColor, "#FF8000")
        XCTAssertEqual(configuration.languageCode, "en")

        let groups = try await engine.faq()
        XCTAssertEqual(groups.first?.title, "Getting started")
        XCTAssertEqual(groups.first?.data.map(\.resultId), ["1001", "1008", "1004", "1016", "1006"])
    }

    func testSearchCarriesExtraDataAndChannels() async throws {
        let reply = try await engine.search("reset")
        let lights = try XCTUnwrap(reply.answerList.first { $0.resultId == "1006" })
        let table = lights.body?.extraData?["table"]
        guard case .array(let rows)? = table else { return XCTFail("no extra data table: \(String(describing: table))") }
        XCTAssertEqual(rows.first?["colour"]?.stringValue, "blue")
        XCTAssertEqual(rows.first?["meaning"]?.stringValue, "online")

        let phone = try XCTUnwrap(reply.answerList.first?.channeling.first { $0.kind == "phone" })
        XCTAssertEqual(phone.phoneNumber, "+44 800 555 0199")

        // After a dislike the article offers the chat too, with the service's own spelling.
        let channels = try await engine.channels(for: "1003", likeState: 2)
        let chat = try XCTUnwrap(channels.first { $0.kind == "chat" })
        XCTAssertEqual(chat.accontNum, "AC-4711")
        XCTAssertEqual(channels.first { $0.kind == "custom URL" }?.linkUrl, "https://community.acme.example/")

        // A hit of the latest search can be escalated through its channel.
        let report = try await engine.reportChannel(of: "1006", index: 0)
        XCTAssertEqual(report.form, "escalate")
        XCTAssertEqual(report.channel, phone)
    }

    func testSuggestionsCarryTheirStyledRuns() async throws {
        let suggestions = try await engine.suggest("rou")
        XCTAssertEqual(suggestions.query, "rou")
        XCTAssertFalse(suggestions.suggestions.isEmpty)
        for suggestion in suggestions.suggestions {
            // The runs cover the text end to end; the matched word is the bold one.
            var next = 0
            for run in suggestion.runs {
                XCTAssertEqual(run.location, next, suggestion.text)
                next = run.location + run.length
            }
            XCTAssertEqual(next, suggestion.text.trimmingCharacters(in: .whitespaces).utf16.count, suggestion.text)
            let bold = suggestion.runs.filter { $0.font.bold }.map { suggestion.substring(of: $0).lowercased() }
            XCTAssertEqual(bold, ["router"], suggestion.text)
        }
    }

    func testAnswersComeFromTheStoreAndLikesAreKept() async throws {
        let fetched = try await engine.answer("1004")
        XCTAssertEqual(fetched.title, "How do I change my Wi-Fi password?")
        XCTAssertFalse(fetched.body?.articleBody?.isEmpty ?? true)

        // The service does not know this answer: it can only come from the store.
        try Engine.store(StoredAnswer(resultId: "swift-local-1", title: "Kept here", body: "From the store"),
                         as: "swift-local-1")
        let stored = try await engine.answer("swift-local-1")
        XCTAssertEqual(stored.title, "Kept here")

        XCTAssertNil(engine.likeState("1004"))
        engine.setLikeState("1004", liked: true)
        XCTAssertEqual(engine.likeState("1004"), true)
        let receipt = try await engine.like("1004", liked: true)
        XCTAssertEqual([receipt.resultId, "\(receipt.action)", "\(receipt.success)"], ["1004", "1", "true"])
    }
}
