import CQuorvix
import Foundation

/// A notification of the engine's connection layer.
public enum ConnectionEvent: String, Sendable, Decodable {
    /// The network was lost: requests fail until it recovers.
    case failed
    /// The network is back.
    case recovered
}

extension Quorvix {
    /// The connection layer's notifications, from now until the stream's
    /// consumer stops iterating. Any number of streams may be open at once.
    public static func connectionEvents() -> AsyncStream<ConnectionEvent> {
        AsyncStream { continuation in
            let id = ConnectionListeners.shared.add(continuation)
            continuation.onTermination = { _ in ConnectionListeners.shared.remove(id) }
        }
    }
}

/// The open streams. The C listener is installed once, with the first
/// stream, and stays: installing it never waits on the lock it delivers under.
final class ConnectionListeners: @unchecked Sendable {
    static let shared: ConnectionListeners = {
        let listeners = ConnectionListeners()
        qx_set_error_listener(connectionListener, nil)
        return listeners
    }()

    // Guarded by `lock`.
    private let lock = NSLock()
    private var next = 0
    private var streams: [Int: AsyncStream<ConnectionEvent>.Continuation] = [:]

    func add(_ continuation: AsyncStream<ConnectionEvent>.Continuation) -> Int {
        lock.withLock {
            next += 1
            streams[next] = continuation
            return next
        }
    }

    func remove(_ id: Int) {
        lock.withLock {
            streams[id] = nil
        }
    }

    func deliver(_ event: ConnectionEvent) {
        let open = lock.withLock { Array(streams.values) }
        for continuation in open { continuation.yield(event) }
    }
}

private struct Notification: Decodable {
    let event: ConnectionEvent
}

private let connectionListener: qx_notification_fn = { _, json in
    guard let json,
          let notification = try? JSONDecoder().decode(Notification.self, from: Data(bytes: json, count: strlen(json)))
    else { return }
    ConnectionListeners.shared.deliver(notification.event)
}
