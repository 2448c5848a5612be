import Foundation

// The engine's result documents (docs/json-models.md), decoded as they come.
// Every member the engine may send as null is optional here.

/// An open session.
public struct Session: Codable, Sendable, Equatable {
    /// The session id.
    public let sessionId: String?
    /// The keep-alive delay the service asked for, in seconds.
    public let delay: Double?
}

/// A text font: `family` "system" is the platform's system font.
public struct Font: Codable, Sendable, Equatable {
    /// The family name, or "system".
    public let family: String
    /// The size in points.
    public let pointSize: Double
    /// Whether the font is bold.
    public let bold: Bool
}

/// An answer's body.
public struct AnswerBody: Codable, Sendable, Equatable {
    /// The article's text (HTML as the knowledge base holds it), nil when not fetched.
    public let articleBody: String?
    /// Structured data the article carries, as the service sent it.
    public let extraData: JSONValue?
}

/// An answer of the knowledge base (an FAQ entry or a fetched article).
public struct Answer: Codable, Sendable, Equatable {
    /// The answer's id (nil when the stored copy does not carry it).
    public let resultId: String?
    /// The title.
    public let title: String?
    /// The body, nil when the service sent none.
    public let body: AnswerBody?
    /// The content hash, used to check a stored copy.
    public let hash: String?
    /// The vote remembered for it (0 none, 1 liked, 2 disliked).
    public let likeState: Int?
}

/// A search hit: an answer with its ranking details and escalation channels.
public struct SearchHit: Codable, Sendable, Equatable, Identifiable {
    /// The answer's id.
    public let resultId: String
    /// The title.
    public let title: String?
    /// The body, with the article's extra data.
    public let body: AnswerBody?
    /// The content hash.
    public let hash: String?
    /// The vote remembered for it.
    public let likeState: Int?
    /// How many users liked it, as the service sent it.
    public let likes: String?
    /// The keyword set that matched.
    public let keywordsetId: String?
    /// Whether the hit only selects a context.
    public let isContextSelectionOnly: Bool?
    /// The context values the hit selects, as sent.
    public let contextSelection: JSONValue?
    /// The context value's text, for context-selection hits.
    public let contextValue: String?
    /// The index of the current context.
    public let currentContextIndex: Int?
    /// The escalation channels of the hit.
    public let channeling: [Channel]
    /// The answer's id.
    public var id: String { resultId }
}

/// A search context the service asks the user to pick a value of.
public struct SearchContext: Codable, Sendable, Equatable {
    /// One value of the context.
    public struct Value: Codable, Sendable, Equatable {
        /// The value's id.
        public let id: String?
        /// The value's name.
        public let name: String?
        /// Flags, as sent.
        public let flags: JSONValue?
        /// The text shown to select it.
        public let selectionText: String?
    }
    /// The context's version, as sent.
    public let v: JSONValue?
    /// The order, as sent.
    public let order: JSONValue?
    /// The values.
    public let values: [Value]?
    /// Whether several values may be picked, as sent.
    public let multipleContext: JSONValue?
}

/// The reply to a search.
public struct SearchReply: Codable, Sendable, Equatable {
    /// The hits, best first.
    public let answerList: [SearchHit]
    /// The context the user may narrow the search with.
    public let context: SearchContext?
    /// The service's id of this search.
    public let requestId: JSONValue?
    /// The knowledge base's language.
    public let kbLanguageCode: String?
    /// The language the service detected in the query.
    public let detectedLanguage: String?
    /// The channels offered for the search as a whole.
    public let channels: [Channel]?
}

/// A text with styled runs (a suggestion): locations and lengths count UTF-16 code units.
public struct StyledText: Codable, Sendable, Equatable {
    /// One run of the text in one font.
    public struct Run: Codable, Sendable, Equatable {
        /// Where the run starts, in UTF-16 code units.
        public let location: Int
        /// How long it is, in UTF-16 code units.
        public let length: Int
        /// Its font.
        public let font: Font
    }
    /// The text.
    public let text: String
    /// The runs, in order.
    public let runs: [Run]

    /// The text of one run.
    public func substring(of run: Run) -> String {
        let utf16 = Array(text.utf16)
        let start = max(0, min(run.location, utf16.count))
        let end = max(start, min(run.location + run.length, utf16.count))
        return String(decoding: utf16[start..<end], as: UTF16.self)
    }
}

/// The suggestions for a typed text.
public struct Suggestions: Codable, Sendable, Equatable {
    /// The typed text.
    public let query: String
    /// The suggestions as the service sent them.
    public let a: [String]
    /// The suggestions as styled texts (the typed part in the bold font).
    public let suggestions: [StyledText]
}

/// An escalation channel (phone, chat, contact form, custom URL or script).
/// Members that do not belong to the channel's kind are nil.
public struct Channel: Codable, Sendable, Equatable {
    /// "phone", "chat", "contact form", "custom URL", "custom script" or "plain".
    public let kind: String
    /// The channel type number.
    public let type: Int?
    /// The button's text.
    public let buttonText: String?
    /// What the channel offers.
    public let channelDescription: String?
    /// Phone: the number to call.
    public let phoneNumber: String?
    /// Phone: extra content to show.
    public let customContent: String?
    /// Chat: the provider.
    public let chatProvider: String?
    /// Chat: the provider account, as the service spells it.
    public let accontNum: String?
    /// Chat: the provider account.
    public let accountNum: String?
    /// Chat: the agent skill.
    public let agentSkill: String?
    /// Chat: the expected wait, as sent.
    public let waitTime: JSONValue?
    /// Contact form: the form's fields, as sent.
    public let contactForms: JSONValue?
    /// Contact form: the message shown once it is sent.
    public let thankYouMessage: String?
    /// Custom URL: the address.
    public let linkUrl: String?
    /// Custom URL: the link target.
    public let linkTarget: String?
    /// Custom URL or chat: the popup size, as sent.
    public let popupSize: JSONValue?
    /// Custom script: the script.
    public let scriptContent: String?
}

/// An FAQ group.
public struct FAQGroup: Codable, Sendable, Equatable {
    /// The group's title.
    public let title: String?
    /// How the group is shown.
    public let behavior: Int?
    /// The answers (titles; bodies are fetched with `answer`).
    public let data: [Answer]
}

/// A label of the account.
public struct Label: Codable, Sendable, Equatable {
    /// The label's id.
    public let labelId: String?
    /// The context it selects.
    public let context: String?
    /// The name shown.
    public let labelName: String?
    /// The icon's address.
    public let iconUrl: String?
}

/// The widget configuration: colours ("#RRGGBB"), texts and switches. The
/// component objects are kept as sent.
public struct Configuration: Codable, Sendable, Equatable {
    /// The status bar colour.
    public let statusBarColor: String?
    /// The navigation bar (`title`, `backgroundColor`, `textColor`, `font`).
    public let navBar: JSONValue?
    /// The result title style.
    public let title: JSONValue?
    /// The search bar (`placeHolder`, `voiceEnabled`, ...).
    public let searchBar: JSONValue?
    /// The suggestion list's style.
    public let autoComplete: JSONValue?
    /// The article style.
    public let content: JSONValue?
    /// The like/dislike texts.
    public let like: JSONValue?
    /// The negative-feedback form.
    public let negativeFeedback: JSONValue?
    /// The channel style.
    public let channeling: JSONValue?
    /// The logo settings.
    public let logo: JSONValue?
    /// The bot conversation settings.
    public let conversationSettings: JSONValue?
    /// Whether answers depend on a context.
    public let isContextDependent: Bool?
    /// The FAQ groups the configuration carries.
    public let faqs: [FAQGroup]?
    /// The language.
    public let languageCode: String?
    /// The knowledge base's id.
    public let kbId: String?
    /// The text shown when a search has no answers.
    public let customNoAnswersText: String?
    /// The labels.
    public let labels: [Label]?
    /// Whether the widget shows labels.
    public let useLabels: Bool?
}

/// The receipt of a like or dislike.
public struct LikeReceipt: Codable, Sendable, Equatable {
    /// The answer voted on.
    public let resultId: String
    /// 1 liked, 0 disliked.
    public let action: Int
    /// Whether the service took it.
    public let success: Bool
}

/// The outcome of adding a dynamic context.
public struct ContextChange: Codable, Sendable, Equatable {
    /// The context's name.
    public let name: String?
    /// Its value.
    public let value: String?
    /// Whether the service took it.
    public let success: Bool?
}

/// The receipt of a channel report.
public struct ChannelReport: Codable, Sendable, Equatable {
    /// The article.
    public let articleId: String
    /// "escalate" (a search hit) or "report" (a fetched answer).
    public let form: String
    /// The channel that was used.
    public let channel: Channel
}

/// An answer the host keeps in the answer store.
public struct StoredAnswer: Codable, Sendable, Equatable {
    /// The answer's id.
    public let resultId: String
    /// The title.
    public let title: String
    /// The body text.
    public let body: String

    /// An answer to store.
    public init(resultId: String, title: String, body: String) {
        self.resultId = resultId
        self.title = title
        self.body = body
    }
}

/// An entity the host supplies to the bot.
public struct Entity: Codable, Sendable, Equatable {
    /// The entity type ("number", "date", ...).
    public let type: String
    /// The value.
    public let value: String
    /// What the value stands for ("amount", ...).
    public let kind: String?

    /// An entity of a type with a value.
    public init(type: String, value: String, kind: String? = nil) {
        self.type = type
        self.value = value
        self.kind = kind
    }
}

/// One entity the bot asks for.
public struct MissingEntity: Codable, Sendable, Equatable {
    /// The entity type.
    public let type: String?
    /// The name the bot gives it.
    public let name: String?
    /// The bot's question for it.
    public let question: String?
}

/// An option the bot offers (a quick or persistent option).
public struct BotOption: Codable, Sendable, Equatable {
    /// The text shown.
    public let text: String?
    /// What to send back with `send(postback:)`.
    public let postback: String?
    /// An external address to open instead.
    public let external: String?
    /// The option's kind number.
    public let kind: Int?
    /// The option's type number.
    public let type: Int?
    /// The option as the service sent it.
    public let params: JSONValue?
}

/// An action of a bot reply.
public struct BotAction: Codable, Sendable, Equatable {
    /// The action's id.
    public let actionId: String?
    /// Its text.
    public let text: String?
    /// Its details, as sent.
    public let userInfo: JSONValue?
}

/// The bot's reply to a statement, postback or article request.
public struct BotReply: Codable, Sendable, Equatable {
    /// The reply's status.
    public let status: Int?
    /// The statement it answers, as sent.
    public let statement: String?
    /// The reply text; a masked reply's text may itself be JSON with a "text" member.
    public let text: String?
    /// The article the reply is about.
    public let articleId: String?
    /// The entities the bot still needs.
    public let missingEntities: [MissingEntity]?
    /// The entities of the reply, as sent.
    public let entities: [JSONValue]
    /// The quick options.
    public let quickOptions: [BotOption]
    /// The options that stay.
    public let persistentOptions: [BotOption]
    /// The actions.
    public let actions: [BotAction]
    /// Whether the reply offers to read more.
    public let isReadMore: Bool?
    /// Whether the reply is valid.
    public let isValid: Bool?

    /// The text to show: the "text" member of a JSON text, or the text itself.
    public var displayText: String? {
        guard let text else { return nil }
        if let data = text.data(using: .utf8),
           let inner = try? JSONDecoder().decode([String: JSONValue].self, from: data),
           let shown = inner["text"]?.stringValue {
            return shown
        }
        return text
    }
}

/// A personal-information placeholder the host may fill.
public struct PersonalInformationQuestion: Codable, Sendable, Equatable {
    /// The placeholder's signature.
    public let signature: String?
    /// The kind of information ("accountBalance", ...).
    public let personalInfoId: String?
    /// Its arguments, as sent.
    public let methodArgs: [JSONValue]
}

struct FAQList: Decodable { let groups: [FAQGroup] }
struct LabelFAQ: Decodable { let answers: [Answer] }
struct ArticleChannels: Decodable { let channels: [Channel] }
struct OpenedConversation: Decodable { let conversationId: String }
