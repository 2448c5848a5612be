import CQuorvix
import Foundation

extension Quorvix {
    /// Sends every log line of the engine (secrets already replaced by "***")
    /// to `handler`, on the engine's threads; nil restores the default
    /// (standard error).
    public static func setLogHandler(_ handler: (@Sendable (String) -> Void)?) {
        LogSink.shared.set(handler)
    }
}

/// The installed handler. The C sink is installed once and reads the handler
/// under a lock, so replacing it never races with a line being written.
final class LogSink: @unchecked Sendable {
    static let shared = LogSink()

    // Guarded by `lock`.
    private let lock = NSLock()
    private var handler: (@Sendable (String) -> Void)?

    func set(_ handler: (@Sendable (String) -> Void)?) {
        lock.withLock { self.handler = handler }
        if handler == nil {
            qx_set_log_sink(nil, nil)
        } else {
            qx_set_log_sink(logLine, nil)
        }
    }

    func write(_ line: String) {
        let current = lock.withLock { handler }
        current?(line)
    }
}

private let logLine: qx_log_fn = { _, line in
    guard let line else { return }
    LogSink.shared.write(String(cString: line))
}
