import CQuorvix

/// The account an engine works for.
public struct Account: Sendable, Equatable {
    /// The account name.
    public var account: String
    /// The knowledge base.
    public var knowledgeBase: String
    /// The API key, when the account needs one.
    public var apiKey: String?
    /// The server name, when it is not the default.
    public var server: String?
    /// The label the engine starts with.
    public var labelId: String?
    /// The referrer reported to the service.
    public var referrer: String?
    /// Whether every context is mandatory.
    public var allContextsMandatory: Bool
    /// The static context (name to value).
    public var context: [String: String]

    /// Account parameters; only the account and the knowledge base are required.
    public init(account: String, knowledgeBase: String, apiKey: String? = nil, server: String? = nil,
                labelId: String? = nil, referrer: String? = nil, allContextsMandatory: Bool = false,
                context: [String: String] = [:]) {
        self.account = account
        self.knowledgeBase = knowledgeBase
        self.apiKey = apiKey
        self.server = server
        self.labelId = labelId
        self.referrer = referrer
        self.allContextsMandatory = allContextsMandatory
        self.context = context
    }

    /// The C parameters (the caller frees them).
    func makeHandle() throws -> OpaquePointer {
        guard let handle = qx_account_new() else {
            throw QuorvixError(domain: QuorvixError.bindingDomain, code: QuorvixError.noResult,
                               userInfo: ["Description": "no memory for the account parameters"])
        }
        qx_account_set_account(handle, account)
        qx_account_set_knowledge_base(handle, knowledgeBase)
        qx_account_set_api_key(handle, apiKey)
        qx_account_set_server(handle, server)
        qx_account_set_label_id(handle, labelId)
        qx_account_set_referrer(handle, referrer)
        qx_account_set_all_contexts_mandatory(handle, allContextsMandatory ? 1 : 0)
        if !context.isEmpty, let refused = QuorvixError.take(qx_account_set_context(handle, try jsonText(context))) {
            qx_account_free(handle)
            throw refused
        }
        return handle
    }
}
