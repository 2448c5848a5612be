import CQuorvix
import Foundation

/// Why an engine operation failed: the engine's error domain, its code in
/// that domain and the user information that says why.
///
/// Domains: `com.quorvix` (the service refused; the code is the HTTP
/// status), `com.quorvix.engine` (a reply the engine could not use),
/// `NSURLErrorDomain` (the transport; `userInfo["description"]` is the
/// transport's reason and `userInfo["url"]` the address), `NSCocoaErrorDomain`
/// (not JSON) and ``QuorvixError/bindingDomain`` for errors of the interface
/// itself (see the code constants below).
public struct QuorvixError: Error, Sendable, Equatable, CustomStringConvertible {
    /// The domain of the errors the C interface and this package make themselves.
    public static let bindingDomain = QX_ERROR_DOMAIN
    /// The engine dropped the request without an answer; `reasonDomain` and
    /// `reasonCode` in ``userInfo`` say why when the session could not start.
    public static let abandoned = Int(QX_ERROR_ABANDONED)
    /// An argument was missing or malformed.
    public static let invalidArgument = Int(QX_ERROR_INVALID_ARGUMENT)
    /// The engine answered with nothing and no reason.
    public static let noResult = Int(QX_ERROR_NO_RESULT)
    /// The operation needs something this engine does not hold.
    public static let notFound = Int(QX_ERROR_NOT_FOUND)

    /// The error domain.
    public let domain: String
    /// The code within the domain.
    public let code: Int
    /// The user information, every value as text.
    public let userInfo: [String: String]

    /// Makes an error from its parts.
    public init(domain: String, code: Int, userInfo: [String: String] = [:]) {
        self.domain = domain
        self.code = code
        self.userInfo = userInfo
    }

    /// The reason in words: the user information's description, when there is one.
    public var reason: String? {
        userInfo["Description"] ?? userInfo["description"] ?? userInfo["NSLocalizedDescription"]
    }

    /// "domain code: reason".
    public var description: String {
        "\(domain) \(code): \(reason ?? userInfo.description)"
    }

    /// Copies an error the C interface passed (it lives only during the call).
    init(_ error: UnsafePointer<qx_error>) {
        let raw = error.pointee
        domain = raw.domain.map { String(cString: $0) } ?? ""
        code = Int(raw.code)
        userInfo = raw.user_info_json.map { QuorvixError.strings(fromJSON: String(cString: $0)) } ?? [:]
    }

    /// Takes over an error a synchronous C function returned; nil when there is none.
    static func take(_ error: UnsafeMutablePointer<qx_error>?) -> QuorvixError? {
        guard let error else { return nil }
        defer { qx_error_free(error) }
        return QuorvixError(UnsafePointer(error))
    }

    /// A malformed argument, found before anything reached the engine.
    static func invalid(_ why: String) -> QuorvixError {
        QuorvixError(domain: bindingDomain, code: invalidArgument, userInfo: ["Description": why])
    }

    private static func strings(fromJSON text: String) -> [String: String] {
        guard let object = try? JSONSerialization.jsonObject(with: Data(text.utf8)) as? [String: Any] else {
            return [:]
        }
        return object.mapValues { value in
            if let text = value as? String { return text }
            if let data = try? JSONSerialization.data(withJSONObject: value, options: [.fragmentsAllowed]) {
                return String(decoding: data, as: UTF8.self)
            }
            return "\(value)"
        }
    }
}
