import CQuorvix
import Foundation

/// What one asynchronous C call reports: the document's bytes, or the error.
/// The C side holds it retained through its `context` pointer; the callback
/// takes that reference back, so the box is released exactly once, and the
/// continuation inside is resumed exactly once.
final class CallbackBox: Sendable {
    let continuation: CheckedContinuation<Data, Error>

    init(_ continuation: CheckedContinuation<Data, Error>) {
        self.continuation = continuation
    }
}

/// The C callback of every asynchronous operation.
let resumeCallback: qx_callback = { context, json, error in
    guard let context else { return }
    let box = Unmanaged<CallbackBox>.fromOpaque(context).takeRetainedValue()
    if let json {
        box.continuation.resume(returning: Data(bytes: json, count: strlen(json)))
    } else if let error {
        box.continuation.resume(throwing: QuorvixError(error))
    } else {
        box.continuation.resume(throwing: QuorvixError(
            domain: QuorvixError.bindingDomain, code: QuorvixError.noResult,
            userInfo: ["Description": "the engine answered with neither a document nor an error"]))
    }
}

/// Starts one C operation and waits for its single callback: the raw document.
func document(_ start: (qx_callback, UnsafeMutableRawPointer) -> Void) async throws -> Data {
    try await withCheckedThrowingContinuation { continuation in
        let context = Unmanaged.passRetained(CallbackBox(continuation)).toOpaque()
        start(resumeCallback, context)
    }
}

/// Starts one C operation and decodes the document it answers with.
func decoded<T: Decodable>(_ type: T.Type, _ start: (qx_callback, UnsafeMutableRawPointer) -> Void)
    async throws -> T
{
    let data = try await document(start)
    do {
        return try JSONDecoder().decode(T.self, from: data)
    } catch {
        throw QuorvixError(
            domain: QuorvixError.bindingDomain, code: QuorvixError.invalidArgument,
            userInfo: ["Description": "the engine's document does not decode as \(T.self): \(error)"])
    }
}

/// JSON text of an encodable value, for the C functions that take JSON.
func jsonText<T: Encodable>(_ value: T) throws -> String {
    let data = try JSONEncoder().encode(value)
    return String(decoding: data, as: UTF8.self)
}
