// swift-tools-version:6.0
// The engine for Swift hosts: `CQuorvix` is the installed C API (found through
// pkg-config as `quorvix`), `Quorvix` the Swift library a host imports.
import PackageDescription

let package = Package(
    name: "Quorvix",
    products: [
        .library(name: "Quorvix", targets: ["Quorvix"]),
    ],
    targets: [
        .systemLibrary(name: "CQuorvix", pkgConfig: "quorvix"),
        .target(
            name: "Quorvix",
            dependencies: ["CQuorvix"]),
        .testTarget(name: "QuorvixTests", dependencies: ["Quorvix"]),
    ]
)
