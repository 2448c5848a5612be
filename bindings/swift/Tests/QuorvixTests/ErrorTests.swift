import Foundation
import Quorvix
import XCTest

final class ErrorTests: XCTestCase {
    override func setUpWithError() throws {
        try Sandbox.use()
    }

    override func tearDownWithError() throws {
        try Sandbox.use()
    }

    func testTheServiceRefusesWithItsStatus() async throws {
        let engine = try Engine(account: Sandbox.account)
        do {
            _ = try await engine.answer("no-such-article")
            XCTFail("an unknown article was answered")
        } catch let error as QuorvixError {
            XCTAssertEqual(error.domain, "com.quorvix")
            XCTAssertEqual(error.code, 404)
        }

        // A knowledge base the service does not know: the session cannot start.
        let unknown = try Engine(account: Account(account: "acme", knowledgeBase: "no-such-kb"))
        do {
            _ = try await unknown.search("router")
            XCTFail("a search without a session was answered")
        } catch let error as QuorvixError {
            XCTAssertEqual(error.domain, QuorvixError.bindingDomain)
            XCTAssertEqual(error.code, QuorvixError.abandoned)
            XCTAssertEqual(error.userInfo["reasonDomain"], "com.quorvix")
            XCTAssertEqual(error.userInfo["reasonCode"], "404")
        }

        // A channel report for an article this engine never saw.
        do {
            _ = try await engine.reportChannel(of: "1004", index: 0)
            XCTFail("a report for an unknown article was sent")
        } catch let error as QuorvixError {
            XCTAssertEqual(error.code, QuorvixError.notFound)
            XCTAssertNotNil(error.reason)
        }
    }

    func testARefusedConnectionSaysWhy() async throws {
        // Only loopback may be plain http.
        XCTAssertThrowsError(try Quorvix.setService("http://example.com:8080")) { error in
            XCTAssertNotNil((error as? QuorvixError)?.reason)
        }
        try Quorvix.setService("http://localhost:\(try closedPort())")
        let engine = try Engine(account: Sandbox.account)
        // Without an HTTP answer the service road reports status 0.
        do {
            _ = try await engine.answer("1004")
            XCTFail("an answer arrived over a refused connection")
        } catch let error as QuorvixError {
            XCTAssertEqual([error.domain, "\(error.code)"], ["com.quorvix", "0"], "\(error)")
        }
        // A search needs a session, which cannot start: dropped, with the session's reason.
        do {
            _ = try await engine.search("router")
            XCTFail("a search was answered over a refused connection")
        } catch let error as QuorvixError {
            XCTAssertEqual([error.domain, "\(error.code)"], [QuorvixError.bindingDomain, "\(QuorvixError.abandoned)"])
            XCTAssertEqual(error.userInfo["reasonDomain"], "com.quorvix", "\(error)")
            XCTAssertEqual(error.userInfo["reasonCode"], "0", "\(error)")
            XCTAssertNotNil(error.reason)
        }
    }

    func testTheConnectionLayerReportsRecovery() async throws {
        let events = Quorvix.connectionEvents()
        let engine = try Engine(account: Sandbox.account)
        _ = try? await engine.answer("no-such-article")  // any failure marks the connection as failing
        _ = try await engine.answer("1004")  // and the next success recovers it
        let first = await withTaskGroup(of: ConnectionEvent?.self) { group in
            group.addTask { await events.first { $0 == .recovered } }
            group.addTask {
                try? await Task.sleep(nanoseconds: 5_000_000_000)
                return nil
            }
            let first = await group.next() ?? nil
            group.cancelAll()
            return first
        }
        XCTAssertEqual(first, .recovered)
    }

    /// A loopback port nobody listens on: bound without listening, read, then closed.
    private func closedPort() throws -> Int {
        let fd = socket(AF_INET, Int32(SOCK_STREAM_TYPE), 0)
        guard fd >= 0 else { throw SandboxFailure(reason: "no socket") }
        defer { close(fd) }
        var address = sockaddr_in()
        address.sin_family = sa_family_t(AF_INET)
        address.sin_addr.s_addr = inet_addr("127.0.0.1")
        address.sin_port = 0
        var length = socklen_t(MemoryLayout<sockaddr_in>.size)
        let bound = withUnsafeMutablePointer(to: &address) { pointer in
            pointer.withMemoryRebound(to: sockaddr.self, capacity: 1) { raw in
                bind(fd, raw, length) == 0 && getsockname(fd, raw, &length) == 0
            }
        }
        guard bound else { throw SandboxFailure(reason: "no loopback port") }
        return Int(UInt16(bigEndian: address.sin_port))
    }
}

#if canImport(Glibc)
import Glibc
private let SOCK_STREAM_TYPE = SOCK_STREAM.rawValue
#else
import Darwin
private let SOCK_STREAM_TYPE = SOCK_STREAM
#endif
