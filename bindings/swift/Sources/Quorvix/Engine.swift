import CQuorvix
import Foundation

/// One engine working for one account: search, answers, FAQ, feedback,
/// escalation channels and the bot conversation. Every operation is an
/// `async` function that throws a ``QuorvixError``. An engine may be used from
/// any task; it stops when the last reference to it goes, and operations
/// still in flight then end with ``QuorvixError/abandoned``.
public final class Engine: @unchecked Sendable {
    // The C handle may be used from any thread; `lock` guards only `chatHandlers`.
    private let handle: OpaquePointer
    private let lock = NSLock()
    private var chatHandlers: [ChatHandlerBox] = []

    /// A new, independent engine prepared for `account`.
    public init(account: Account) throws {
        let parameters = try account.makeHandle()
        defer { qx_account_free(parameters) }
        guard let engine = qx_engine_new() else {
            throw QuorvixError(domain: QuorvixError.bindingDomain, code: QuorvixError.noResult,
                               userInfo: ["Description": "the engine could not be made"])
        }
        handle = engine
        qx_prepare(engine, parameters)
    }

    deinit {
        qx_engine_free(handle)
        // The handlers outlive the engine's last question to them.
        chatHandlers.removeAll()
    }

    /// Prepares the engine for another account; the next requests use it.
    public func prepare(_ account: Account) throws {
        let parameters = try account.makeHandle()
        defer { qx_account_free(parameters) }
        qx_prepare(handle, parameters)
    }

    /// Cancels the keep-alive, empties the suggestion cache and drops the session.
    public func stop() {
        qx_stop(handle)
    }

    // MARK: session, configuration, FAQ and answers

    /// Opens a session.
    public func startSession() async throws -> Session {
        try await decoded(Session.self) { qx_start_session(handle, $0, $1) }
    }

    /// The widget configuration (fetched when the engine holds none).
    public func configuration() async throws -> Configuration {
        try await decoded(Configuration.self) { qx_configuration(handle, $0, $1) }
    }

    /// The FAQ groups.
    public func faq() async throws -> [FAQGroup] {
        try await decoded(FAQList.self) { qx_faq_list(handle, $0, $1) }.groups
    }

    /// The answers of a label's FAQ.
    public func faq(label labelId: String) async throws -> [Answer] {
        try await decoded(LabelFAQ.self) { qx_label_faq(handle, labelId, $0, $1) }.answers
    }

    /// One answer, from the answer store when it is there.
    public func answer(_ answerId: String, hash: String? = nil) async throws -> Answer {
        try await decoded(Answer.self) { qx_answer(handle, answerId, hash, $0, $1) }
    }

    /// Keeps an answer in the answer store under `answerId` (the store is
    /// shared by every engine of the process).
    public static func store(_ answer: StoredAnswer, as answerId: String) throws {
        if let refused = QuorvixError.take(qx_store_answer(answerId, try jsonText(answer))) { throw refused }
    }

    /// Reports that the user liked (`true`) or disliked an answer, with the
    /// dislike's reason when there is one.
    public func like(_ resultId: String, liked: Bool, reason: String? = nil) async throws -> LikeReceipt {
        try await decoded(LikeReceipt.self) { qx_like(handle, resultId, liked ? 1 : 0, reason, $0, $1) }
    }

    /// The vote remembered for a result: true liked, false disliked, nil none.
    public func likeState(_ resultId: String) -> Bool? {
        switch qx_like_state(handle, resultId) {
        case 1: return true
        case 0: return false
        default: return nil
        }
    }

    /// Remembers the user's vote for a result.
    public func setLikeState(_ resultId: String, liked: Bool) {
        qx_set_like_state(handle, resultId, liked ? 1 : 0)
    }

    // MARK: search, contexts and channels

    /// Searches the knowledge base.
    public func search(_ text: String) async throws -> SearchReply {
        try await decoded(SearchReply.self) { qx_search(handle, text, $0, $1) }
    }

    /// Suggestions for what the user is typing, with their styled runs.
    public func suggest(_ text: String) async throws -> Suggestions {
        try await decoded(Suggestions.self) { qx_suggest(handle, text, $0, $1) }
    }

    /// Adds a dynamic context value.
    public func changeContext(_ name: String, to value: String) async throws -> ContextChange {
        let object = try jsonText([name: value])
        return try await decoded(ContextChange.self) { qx_change_context(handle, object, $0, $1) }
    }

    /// The escalation channels of an article for a like state (0 none, 1
    /// liked, 2 disliked) and an optional channel context.
    public func channels(for articleId: String, likeState: Int = 0, context: String? = nil) async throws
        -> [Channel]
    {
        try await decoded(ArticleChannels.self) {
            qx_channels(handle, articleId, Int32(likeState), context, $0, $1)
        }.channels
    }

    /// Reports that the user used channel `index` of an article the engine
    /// has seen (a hit of the latest search, or an answer it fetched).
    public func reportChannel(of articleId: String, index: Int) async throws -> ChannelReport {
        guard index >= 0 else { throw QuorvixError.invalid("a channel index is never negative") }
        return try await decoded(ChannelReport.self) { qx_report_channel(handle, articleId, index, $0, $1) }
    }

    // MARK: the bot conversation

    /// Installs the host's side of the bot conversation; nil removes it.
    /// The engine keeps the delegate until it is replaced and the engine goes.
    public func setChatDelegate(_ delegate: (any ChatDelegate)?) {
        guard let delegate else {
            qx_set_chat_handler(handle, nil)
            return
        }
        let box = ChatHandlerBox(delegate)
        lock.withLock { chatHandlers.append(box) }
        var handler = box.cHandler()
        qx_set_chat_handler(handle, &handler)
    }

    /// Opens a conversation; the engine keeps its id for the exchanges.
    /// `entities` declares the entity types the host can supply.
    @discardableResult
    public func createConversation(entities: [String]? = nil, textOnly: Bool = false) async throws -> String {
        let opened: OpenedConversation
        if let entities {
            let list = try jsonText(entities)
            opened = try await decoded(OpenedConversation.self) {
                qx_conversation_create_with_entities(handle, list, textOnly ? 1 : 0, $0, $1)
            }
        } else {
            opened = try await decoded(OpenedConversation.self) { qx_conversation_create(handle, $0, $1) }
        }
        return opened.conversationId
    }

    /// Sends what the user typed: the bot's reply, or nil when it has none.
    public func say(_ text: String) async throws -> BotReply? {
        try await reply { qx_conversation_statement(handle, text, $0, $1) }
    }

    /// Sends an option's postback as it is.
    public func send(postback: String) async throws -> BotReply? {
        try await reply { qx_conversation_postback(handle, postback, $0, $1) }
    }

    /// Asks the bot for an article.
    public func article(_ articleId: String) async throws -> BotReply? {
        try await reply { qx_conversation_article(handle, articleId, $0, $1) }
    }

    /// The feedback reply of the open conversation.
    public func feedback() async throws -> BotReply? {
        try await reply { qx_conversation_feedback(handle, $0, $1) }
    }

    private func reply(_ start: (qx_callback, UnsafeMutableRawPointer) -> Void) async throws -> BotReply? {
        let data = try await document(start)
        if let empty = try? JSONDecoder().decode(NoReply.self, from: data), empty.isEmpty { return nil }
        do {
            return try JSONDecoder().decode(BotReply.self, from: data)
        } catch {
            throw QuorvixError.invalid("the bot's reply does not decode: \(error)")
        }
    }
}

/// Process-wide settings of the engine.
public enum Quorvix {
    /// The library's version, "MAJOR.MINOR.PATCH".
    public static var version: String { String(cString: qx_version()) }

    /// Points every engine at a service base: "https://HOST[:PORT]" or, for
    /// development, "http://localhost:PORT"; nil restores the production hosts.
    public static func setService(_ baseURL: String?) throws {
        if let refused = QuorvixError.take(qx_set_service(baseURL)) { throw refused }
    }

    /// The folder under which the answer store lives; nil restores the default.
    public static func setStorageRoot(_ path: String?) {
        qx_set_storage_root(path)
    }

    /// The bundle identifier and build number reported for the host application.
    public static func setHostInfo(bundleIdentifier: String, buildNumber: String) {
        qx_set_host_info(bundleIdentifier, buildNumber)
    }
}

/// `{"reply": null}`: the bot had nothing to say.
private struct NoReply: Decodable {
    let keys: Int
    var isEmpty: Bool { keys == 1 }

    private struct AnyKey: CodingKey {
        var stringValue: String
        var intValue: Int? { nil }
        init?(stringValue: String) { self.stringValue = stringValue }
        init?(intValue: Int) { nil }
    }

    init(from decoder: Decoder) throws {
        let container = try decoder.container(keyedBy: AnyKey.self)
        guard let key = AnyKey(stringValue: "reply"), container.contains(key), try container.decodeNil(forKey: key)
        else { throw DecodingError.dataCorrupted(.init(codingPath: [], debugDescription: "a reply")) }
        keys = container.allKeys.count
    }
}
