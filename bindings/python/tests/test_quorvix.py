"""The C API from Python (ctypes), against the sandbox service at QUORVIX_SERVICE.

QUORVIX_LIBRARY names libquorvix.so; QUORVIX_TOOL, when set, names the quorvix
tool, whose --json documents must equal the C API's for the same reply.
"""
import json
import os
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import quorvix  # noqa: E402

SERVICE = os.environ["QUORVIX_SERVICE"]
DEMO = dict(account="acme", knowledge_base="support", api_key="demo-key-7f3a")


def setUpModule():
    global storage
    storage = tempfile.TemporaryDirectory()
    quorvix.set_storage_root(storage.name)
    quorvix.set_service(SERVICE)


def tearDownModule():
    storage.cleanup()


class KnowledgeBase(unittest.TestCase):
    def setUp(self):
        self.engine = quorvix.Engine(**DEMO, timeout=10)

    def tearDown(self):
        self.engine.close()

    def test_search_answer_and_the_answer_store(self):
        hits = self.engine.search("router password")["answerList"]
        self.assertIn("1004", [hit["resultId"] for hit in hits])
        answer = self.engine.answer("1004")
        self.assertEqual(answer["title"], "How do I change my Wi-Fi password?")
        self.assertTrue(answer["body"]["articleBody"])
        # A stored answer is served from the store, without the service.
        quorvix.Engine.store_answer("local-1", {"resultId": "local-1", "title": "Kept here", "body": "From the store"})
        self.assertEqual(self.engine.answer("local-1")["title"], "Kept here")

    def test_like_state_is_remembered_per_result(self):
        self.assertIsNone(self.engine.like_state("1004"))
        self.engine.set_like_state("1004", True)
        self.assertIs(self.engine.like_state("1004"), True)
        self.assertEqual(self.engine.like("1004", 1)["success"], True)

    def test_errors_carry_their_reason(self):
        with self.assertRaises(quorvix.QuorvixError) as refused:
            quorvix.set_service("http://example.com:8080")
        self.assertTrue(str(refused.exception))
        with self.assertRaises(quorvix.QuorvixError) as invalid:
            self.engine.change_context("not an object")
        self.assertEqual((invalid.exception.domain, invalid.exception.code),
                         (quorvix.ERROR_DOMAIN, quorvix.INVALID_ARGUMENT))
        self.assertIn("JSON object", invalid.exception.user_info["Description"])
        with quorvix.Engine(account="acme", knowledge_base="no-such-kb", timeout=10) as unknown:
            with self.assertRaises(quorvix.QuorvixError) as dropped:
                unknown.search("router")
        self.assertEqual(dropped.exception.code, quorvix.ABANDONED)
        self.assertEqual((dropped.exception.user_info["reasonDomain"], dropped.exception.user_info["reasonCode"]),
                         ("com.quorvix", "404"))
        with self.assertRaises(quorvix.QuorvixError) as missing:
            self.engine.report_channel("1004", 0)
        self.assertEqual(missing.exception.code, quorvix.NOT_FOUND)


class Conversation(unittest.TestCase):
    def test_missing_entities_and_personal_information_go_to_the_host(self):
        questions = []

        def entities(reply):
            questions.append([wanted["type"] for wanted in reply["missingEntities"]])
            return [{"type": "number", "value": "250", "kind": "amount"},
                    {"type": "date", "value": "2026-12-01", "kind": "date"}]

        with quorvix.Engine(**DEMO, timeout=10) as engine:
            engine.set_chat_handler(missing_entities=entities, personal_information=lambda info: "1,234.56 EUR")
            self.assertTrue(engine.create_conversation()["conversationId"])
            reply = engine.statement("transfer")
            self.assertEqual(questions, [["number", "date"]])
            self.assertIn("Done: 250 will be transferred on 2026-12-01", reply["text"])
            balance = engine.statement("balance")
            self.assertIn("1,234.56 EUR", balance["text"])


@unittest.skipUnless(os.environ.get("QUORVIX_TOOL"), "QUORVIX_TOOL names the quorvix tool")
class OneSchema(unittest.TestCase):
    """The tool's --json document and the C API's are the same for the same reply."""

    def tool(self, *command):
        run = subprocess.run([os.environ["QUORVIX_TOOL"], "--service", SERVICE, "--json", *command],
                             capture_output=True, text=True, timeout=30,
                             env=dict(os.environ, XDG_DATA_HOME=storage.name))
        self.assertEqual(run.returncode, 0, run.stderr)
        return json.loads(run.stdout.splitlines()[-1])

    def test_the_tool_and_the_c_api_print_the_same_documents(self):
        with quorvix.Engine(**DEMO, timeout=10) as engine:
            # Each search reply carries a new request id; everything else is the same.
            printed, passed = self.tool("search", "router password"), engine.search("router password")
            self.assertIsNotNone(printed.pop("requestId"))
            self.assertIsNotNone(passed.pop("requestId"))
            self.assertEqual(printed, passed)
            self.assertEqual(self.tool("answer", "1002"), engine.answer("1002"))
            self.assertEqual(self.tool("faq-list"), engine.faq_list())
            self.assertEqual(self.tool("channels", "1003", "--like-state", "2"), engine.channels("1003", 2))


if __name__ == "__main__":
    unittest.main()
