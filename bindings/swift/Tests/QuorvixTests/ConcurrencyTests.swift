import Quorvix
import Testing

extension QuorvixTests {
    @Suite struct Concurrency {
        /// Many engines, many overlapping requests, `stop` in the middle: every
        /// call returns exactly once (a continuation resumed twice traps, one
        /// never resumed hangs the group).
        @Test func overlappingCallsOnManyEnginesEachFinishOnce() async throws {
            try Sandbox.use()
            let engines = try (0..<4).map { _ in try Engine(account: Sandbox.account) }
            let outcomes = await withTaskGroup(of: Bool.self) { group in
                for round in 0..<40 {
                    let engine = engines[round % engines.count]
                    group.addTask {
                        switch round % 4 {
                        case 0: return (try? await engine.search("router")) != nil
                        case 1: return (try? await engine.suggest("rou")) != nil
                        case 2: return (try? await engine.answer("1004")) != nil
                        default:
                            engine.stop()
                            return (try? await engine.faq()) != nil
                        }
                    }
                }
                var finished: [Bool] = []
                for await outcome in group { finished.append(outcome) }
                return finished
            }
            #expect(outcomes.count == 40)
            // The answers and FAQ do not need a session: they survive every stop.
            #expect(outcomes.contains(true))
        }
    }
}
