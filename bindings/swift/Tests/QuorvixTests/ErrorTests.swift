import Foundation
import Quorvix
import Testing

extension QuorvixTests {
    @Suite struct Errors {
        init() throws {
            try Sandbox.use()
        }

        @Test func theServiceRefusesWithItsStatus() async throws {
            let engine = try Engine(account: Sandbox.account)
            let refused = await #expect(throws: QuorvixError.self) { try await engine.answer("no-such-article") }
            #expect(refused?.domain == "com.quorvix")
            #expect(refused?.code == 404)

            // A knowledge base the service does not know: the session cannot start.
            let unknown = try Engine(account: Account(account: "acme", knowledgeBase: "no-such-kb"))
            let dropped = await #expect(throws: QuorvixError.self) { try await unknown.search("router") }
            #expect(dropped?.domain == QuorvixError.bindingDomain)
            #expect(dropped?.code == QuorvixError.abandoned)
            #expect(dropped?.userInfo["reasonDomain"] == "com.quorvix")
            #expect(dropped?.userInfo["reasonCode"] == "404")
            #expect(dropped?.reason != nil)

            // A channel report for an article this engine never saw.
            let missing = await #expect(throws: QuorvixError.self) { try await engine.reportChannel(of: "1004", index: 0) }
            #expect(missing?.code == QuorvixError.notFound)
            #expect(missing?.reason != nil)
        }

        @Test func aRefusedConnectionSaysWhy() async throws {
            defer { try? Sandbox.use() }
            // Only loopback may be plain http.
            let insecure = #expect(throws: QuorvixError.self) { try Quorvix.setService("http://example.com:8080") }
            #expect(insecure?.reason != nil)

            try Quorvix.setService("http://localhost:\(try Self.closedPort())")
            let engine = try Engine(account: Sandbox.account)
            // Without an HTTP answer the service road reports status 0.
            let refused = await #expect(throws: QuorvixError.self) { try await engine.answer("1004") }
            #expect(refused?.domain == "com.quorvix")
            #expect(refused?.code == 0)
            // The request that failed reaches the host's log handler.
            #expect(Sandbox.log.all.contains { $0.contains("answer.js?id=1004") })
            // A search needs a session, which cannot start: dropped, with the session's reason.
            let dropped = await #expect(throws: QuorvixError.self) { try await engine.search("router") }
            #expect(dropped?.domain == QuorvixError.bindingDomain)
            #expect(dropped?.code == QuorvixError.abandoned)
            #expect(dropped?.userInfo["reasonDomain"] == "com.quorvix")
            #expect(dropped?.userInfo["reasonCode"] == "0")
            #expect(dropped?.reason != nil)
        }

        @Test func theConnectionLayerReportsRecovery() async throws {
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
            #expect(first == .recovered)
        }

        /// A loopback port nobody listens on: bound without listening, read, then closed.
        private static func closedPort() throws -> Int {
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
}

#if canImport(Glibc)
import Glibc
private let SOCK_STREAM_TYPE = SOCK_STREAM.rawValue
#else
import Darwin
private let SOCK_STREAM_TYPE = SOCK_STREAM
#endif
