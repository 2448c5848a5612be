import Foundation
import Quorvix
import Testing

/// The sandbox service on a free loopback port, started once for the whole
/// test run and stopped when the process ends. Its executable is
/// $QUORVIX_SANDBOX, or `bin/quorvix-sandbox` of the prefix quorvix.pc names.
enum Sandbox {
    /// "http://localhost:PORT", or why the sandbox could not start.
    static let service: Result<String, SandboxFailure> = start()

    /// Points the engine at the sandbox and a fresh answer store; throws when there is no sandbox.
    static func use() throws {
        let base = try service.get()
        try Quorvix.setService(base)
        Quorvix.setStorageRoot(storage)
        Quorvix.setLogHandler { line in log.append(line) }
    }

    /// The demo account the sandbox knows.
    static let account = Account(account: "acme", knowledgeBase: "support", apiKey: "demo-key-7f3a")

    private static let storage: String = {
        let folder = FileManager.default.temporaryDirectory
            .appendingPathComponent("quorvix-swift-tests-\(ProcessInfo.processInfo.processIdentifier)")
        try? FileManager.default.createDirectory(at: folder, withIntermediateDirectories: true)
        return folder.path
    }()

    /// The engine's log lines, kept out of the test output.
    static let log = LogLines()

    private nonisolated(unsafe) static var process: Process?

    private static func executable() -> String? {
        if let named = ProcessInfo.processInfo.environment["QUORVIX_SANDBOX"] { return named }
        let pkgConfig = Process()
        pkgConfig.executableURL = URL(fileURLWithPath: "/usr/bin/env")
        pkgConfig.arguments = ["pkg-config", "--variable=prefix", "quorvix"]
        let output = Pipe()
        pkgConfig.standardOutput = output
        guard (try? pkgConfig.run()) != nil else { return nil }
        pkgConfig.waitUntilExit()
        let prefix = String(decoding: output.fileHandleForReading.readDataToEndOfFile(), as: UTF8.self)
            .trimmingCharacters(in: .whitespacesAndNewlines)
        return prefix.isEmpty ? nil : prefix + "/bin/quorvix-sandbox"
    }

    private static func start() -> Result<String, SandboxFailure> {
        guard let path = executable(), FileManager.default.isExecutableFile(atPath: path) else {
            return .failure(SandboxFailure(reason: "no quorvix-sandbox: set QUORVIX_SANDBOX or PKG_CONFIG_PATH"))
        }
        let sandbox = Process()
        sandbox.executableURL = URL(fileURLWithPath: path)
        sandbox.arguments = ["--port", "0"]
        let output = Pipe()
        sandbox.standardOutput = output
        do { try sandbox.run() } catch { return .failure(SandboxFailure(reason: "\(path): \(error)")) }
        process = sandbox
        atexit { Sandbox.process?.terminate() }
        // The sandbox's first line names its address: "... http://127.0.0.1:PORT ...".
        var line = Data()
        while let byte = try? output.fileHandleForReading.read(upToCount: 1), let first = byte.first,
              first != UInt8(ascii: "\n") {
            line.append(first)
        }
        let text = String(decoding: line, as: UTF8.self)
        guard let match = text.range(of: #"http://[^:/ ]+:[0-9]+"#, options: .regularExpression),
              let colon = text[match].lastIndex(of: ":")
        else {
            return .failure(SandboxFailure(reason: "the sandbox did not report its port: \(text)"))
        }
        return .success("http://localhost" + text[colon..<match.upperBound])
    }
}

/// Log lines collected from any thread.
final class LogLines: @unchecked Sendable {
    // Guarded by `lock`.
    private let lock = NSLock()
    private var lines: [String] = []

    func append(_ line: String) { lock.withLock { lines.append(line) } }
    var all: [String] { lock.withLock { lines } }
}

/// Why the tests have no sandbox.
struct SandboxFailure: Error, CustomStringConvertible {
    let reason: String
    var description: String { reason }
}

/// Every suite runs one test at a time: the service address is process-wide
/// and the error tests point it elsewhere for a while.
@Suite(.serialized) struct QuorvixTests {}
