// swift-tools-version:6.0
// A command-line Swift host: searches, reads an answer and talks to the bot.
import PackageDescription

let package = Package(
    name: "QuorvixExample",
    dependencies: [
        .package(path: "../../../bindings/swift"),
    ],
    targets: [
        .executableTarget(
            name: "QuorvixExample",
            dependencies: [.product(name: "Quorvix", package: "swift")]),
    ]
)
