#!/usr/bin/env python3
"""A Python host: searches, reads an answer and talks to the bot through the C API.

    QUORVIX_LIBRARY=/prefix/lib/libquorvix.so PYTHONPATH=bindings/python \
        python3 examples/python/host.py http://localhost:8080
"""
import os
import sys

import quorvix

service = sys.argv[1] if len(sys.argv) > 1 else os.environ.get("QUORVIX_SERVICE")
if service:
    quorvix.set_service(service)
print(f"quorvix {quorvix.version()} (C API {quorvix.api_version()})")

with quorvix.Engine(account="acme", knowledge_base="support", api_key="demo-key-7f3a") as engine:
    hits = engine.search("router password")["answerList"]
    for hit in hits[:3]:
        print(f"{hit['resultId']}: {hit['title']}")
    answer = engine.answer(hits[0]["resultId"])
    print(answer["body"]["articleBody"][:120])

    engine.set_chat_handler(missing_entities=lambda reply: [
        {"type": "number", "value": "250", "kind": "amount"},
        {"type": "date", "value": "2026-12-01", "kind": "date"}])
    engine.create_conversation()
    print("bot:", engine.statement("hi")["text"])
    print("bot:", engine.statement("transfer")["text"])
