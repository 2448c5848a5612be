import CQuorvix
import Foundation

/// The host's side of a bot conversation: the questions the bot puts to the
/// host while it answers a statement. Each is asked once and answered once;
/// the statement's `say` returns the reply that follows the answer.
public protocol ChatDelegate: AnyObject, Sendable {
    /// The bot needs entities the statement lacked (`reply.missingEntities`
    /// holds the question). Return them, or nil to end the exchange (the
    /// statement then fails with ``QuorvixError/abandoned``).
    func missingEntities(for reply: BotReply) async -> [Entity]?

    /// A reply holds a personal-information placeholder. Return the value to
    /// show, or nil to show a button in its place.
    func personalInformation(_ question: PersonalInformationQuestion) async -> String?
}

extension ChatDelegate {
    /// By default the host supplies no entities: the exchange ends.
    public func missingEntities(for reply: BotReply) async -> [Entity]? { nil }

    /// By default personal information is shown as a button.
    public func personalInformation(_ question: PersonalInformationQuestion) async -> String? { nil }
}

/// A question of the bot, handed to the task that answers it exactly once.
private struct PendingRequest: @unchecked Sendable {
    let request: OpaquePointer
}

/// Keeps a delegate alive for the C side, which holds it unretained as its context.
final class ChatHandlerBox: Sendable {
    let delegate: any ChatDelegate

    init(_ delegate: any ChatDelegate) {
        self.delegate = delegate
    }

    func cHandler() -> qx_chat_handler {
        qx_chat_handler(
            context: Unmanaged.passUnretained(self).toOpaque(),
            missing_entities: { context, replyJSON, request in
                guard let context, let request else { return }
                let pending = PendingRequest(request: request)
                let box = Unmanaged<ChatHandlerBox>.fromOpaque(context).takeUnretainedValue()
                let data = replyJSON.map { Data(bytes: $0, count: strlen($0)) } ?? Data()
                guard let reply = try? JSONDecoder().decode(BotReply.self, from: data) else {
                    qx_request_free(pending.request)
                    return
                }
                Task {
                    guard let entities = await box.delegate.missingEntities(for: reply),
                          let text = try? jsonText(entities)
                    else {
                        qx_request_free(pending.request)
                        return
                    }
                    // The request is released whether the answer is taken or refused.
                    _ = QuorvixError.take(qx_answer_missing_entities(pending.request, text))
                }
            },
            personal_information: { context, infoJSON, request in
                guard let context, let request else { return }
                let pending = PendingRequest(request: request)
                let box = Unmanaged<ChatHandlerBox>.fromOpaque(context).takeUnretainedValue()
                let data = infoJSON.map { Data(bytes: $0, count: strlen($0)) } ?? Data()
                guard let question = try? JSONDecoder().decode(PersonalInformationQuestion.self, from: data) else {
                    qx_request_free(pending.request)
                    return
                }
                Task {
                    let value = await box.delegate.personalInformation(question)
                    qx_answer_personal_information(pending.request, value)
                }
            })
    }
}
