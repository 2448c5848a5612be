"""The Quorvix engine from Python, through its C API (libquorvix.so) and ctypes.

Every operation blocks until the engine answers and returns the result
document as Python data (the shape of the `quorvix` tool's --json output,
docs/json-models.md), or raises QuorvixError with the engine's reason.

    import quorvix
    quorvix.set_service("http://localhost:8080")
    engine = quorvix.Engine(account="acme", knowledge_base="support", api_key="demo-key-7f3a")
    hits = engine.search("router password")["answerList"]

The library is found through QUORVIX_LIBRARY (a path), else the system's
library path (libquorvix.so.MAJOR).
"""
import ctypes
import ctypes.util
import json
import os
import threading

__all__ = ["Engine", "QuorvixError", "set_service", "set_storage_root", "set_host_info", "set_ca_file",
           "set_log_sink", "version", "api_version", "ERROR_DOMAIN", "ABANDONED", "INVALID_ARGUMENT",
           "NO_RESULT", "NOT_FOUND"]

ERROR_DOMAIN = "com.quorvix.c"
ABANDONED, INVALID_ARGUMENT, NO_RESULT, NOT_FOUND = 1, 2, 3, 4


class _Error(ctypes.Structure):
    _fields_ = [("domain", ctypes.c_char_p), ("code", ctypes.c_long),
                ("user_info_json", ctypes.c_char_p), ("json", ctypes.c_char_p)]


_CALLBACK = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_char_p, ctypes.POINTER(_Error))
_LOG = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_char_p)
_QUESTION = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_char_p, ctypes.c_void_p)


class _ChatHandler(ctypes.Structure):
    _fields_ = [("context", ctypes.c_void_p), ("missing_entities", _QUESTION),
                ("personal_information", _QUESTION)]


def _load():
    path = os.environ.get("QUORVIX_LIBRARY") or ctypes.util.find_library("quorvix") or "libquorvix.so.0"
    lib = ctypes.CDLL(path)
    engine, account, request = ctypes.c_void_p, ctypes.c_void_p, ctypes.c_void_p
    error_p = ctypes.POINTER(_Error)
    text = ctypes.c_char_p
    signatures = {
        "qx_version": ([], text),
        "qx_api_version": ([], ctypes.c_int),
        "qx_error_free": ([error_p], None),
        "qx_set_log_sink": ([_LOG, ctypes.c_void_p], None),
        "qx_set_host_info": ([text, text], None),
        "qx_set_service": ([text], error_p),
        "qx_set_storage_root": ([text], None),
        "qx_set_ca_file": ([text], None),
        "qx_account_new": ([], account),
        "qx_account_free": ([account], None),
        "qx_account_set_account": ([account, text], None),
        "qx_account_set_knowledge_base": ([account, text], None),
        "qx_account_set_api_key": ([account, text], None),
        "qx_account_set_server": ([account, text], None),
        "qx_account_set_label_id": ([account, text], None),
        "qx_account_set_referrer": ([account, text], None),
        "qx_account_set_context": ([account, text], error_p),
        "qx_engine_new": ([], engine),
        "qx_engine_free": ([engine], None),
        "qx_prepare": ([engine, account], None),
        "qx_stop": ([engine], None),
        "qx_set_chat_handler": ([engine, ctypes.POINTER(_ChatHandler)], None),
        "qx_start_session": ([engine, _CALLBACK, ctypes.c_void_p], None),
        "qx_configuration": ([engine, _CALLBACK, ctypes.c_void_p], None),
        "qx_faq_list": ([engine, _CALLBACK, ctypes.c_void_p], None),
        "qx_labels": ([engine, _CALLBACK, ctypes.c_void_p], None),
        "qx_label_faq": ([engine, text, _CALLBACK, ctypes.c_void_p], None),
        "qx_answer": ([engine, text, text, _CALLBACK, ctypes.c_void_p], None),
        "qx_store_answer": ([text, text], error_p),
        "qx_like": ([engine, text, ctypes.c_int, text, _CALLBACK, ctypes.c_void_p], None),
        "qx_set_like_state": ([engine, text, ctypes.c_int], None),
        "qx_like_state": ([engine, text], ctypes.c_int),
        "qx_search": ([engine, text, _CALLBACK, ctypes.c_void_p], None),
        "qx_suggest": ([engine, text, _CALLBACK, ctypes.c_void_p], None),
        "qx_contexts": ([engine, text, _CALLBACK, ctypes.c_void_p], None),
        "qx_change_context": ([engine, text, _CALLBACK, ctypes.c_void_p], None),
        "qx_channels": ([engine, text, ctypes.c_int, text, _CALLBACK, ctypes.c_void_p], None),
        "qx_report_channel": ([engine, text, ctypes.c_size_t, _CALLBACK, ctypes.c_void_p], None),
        "qx_track_event": ([engine, text], error_p),
        "qx_conversation_create": ([engine, _CALLBACK, ctypes.c_void_p], None),
        "qx_conversation_create_with_entities": ([engine, text, ctypes.c_int, _CALLBACK, ctypes.c_void_p], None),
        "qx_conversation_statement": ([engine, text, _CALLBACK, ctypes.c_void_p], None),
        "qx_conversation_postback": ([engine, text, _CALLBACK, ctypes.c_void_p], None),
        "qx_conversation_article": ([engine, text, _CALLBACK, ctypes.c_void_p], None),
        "qx_conversation_send_entities": ([engine, text, ctypes.c_int, text, _CALLBACK, ctypes.c_void_p], None),
        "qx_conversation_feedback": ([engine, _CALLBACK, ctypes.c_void_p], None),
        "qx_answer_missing_entities": ([request, text], error_p),
        "qx_answer_personal_information": ([request, text], None),
        "qx_request_free": ([request], None),
    }
    for name, (arguments, result) in signatures.items():
        function = getattr(lib, name)
        function.argtypes = arguments
        function.restype = result
    return lib


_lib = _load()


def _bytes(value):
    return None if value is None else value.encode("utf-8")


class QuorvixError(Exception):
    """An error the engine reported: its domain, code and user information."""

    def __init__(self, domain, code, user_info):
        self.domain, self.code, self.user_info = domain, code, user_info
        reason = user_info.get("Description") or user_info.get("description") or user_info.get(
            "NSLocalizedDescription") or ""
        super().__init__(f"{domain} {code}" + (f": {reason}" if reason else ""))

    @classmethod
    def _from(cls, error):
        user_info = json.loads(error.user_info_json.decode("utf-8")) if error.user_info_json else {}
        return cls(error.domain.decode("utf-8"), error.code, user_info)


def _check(error_pointer):
    """Raises the error a synchronous function returned, after freeing it."""
    if error_pointer:
        error = QuorvixError._from(error_pointer.contents)
        _lib.qx_error_free(error_pointer)
        raise error


def version():
    """The library's version text."""
    return _lib.qx_version().decode("utf-8")


def api_version():
    """The C API version the library was built with."""
    return _lib.qx_api_version()


def set_service(base_url):
    """Points every engine at a service base (None: production hosts)."""
    _check(_lib.qx_set_service(_bytes(base_url)))


def set_storage_root(path):
    """The folder under which the answer store lives."""
    _lib.qx_set_storage_root(_bytes(path))


def set_host_info(bundle_identifier, build_number):
    """What the engine reports as the host application."""
    _lib.qx_set_host_info(_bytes(bundle_identifier), _bytes(build_number))


def set_ca_file(path):
    """Trusts the certificate authorities of a PEM file (None: the system store)."""
    _lib.qx_set_ca_file(_bytes(path))


_log_sink = None


def set_log_sink(sink):
    """Sends each engine log line to sink(line); None restores stderr."""
    global _log_sink
    _log_sink = _LOG(lambda _context, line: sink(line.decode("utf-8"))) if sink else None
    _lib.qx_set_log_sink(_log_sink if sink else _LOG(), None)


class Engine:
    """One engine, prepared for one account. Methods block until the engine answers."""

    def __init__(self, account, knowledge_base=None, api_key=None, server=None, label_id=None, referrer=None,
                 context=None, timeout=30.0):
        self.timeout = timeout
        self._handle = _lib.qx_engine_new()
        self._account = _lib.qx_account_new()
        self._pending = {}
        self._pending_lock = threading.Lock()
        self._handler = None
        for setter, value in ((_lib.qx_account_set_account, account),
                              (_lib.qx_account_set_knowledge_base, knowledge_base),
                              (_lib.qx_account_set_api_key, api_key), (_lib.qx_account_set_server, server),
                              (_lib.qx_account_set_label_id, label_id),
                              (_lib.qx_account_set_referrer, referrer)):
            setter(self._account, _bytes(value))
        if context is not None:
            _check(_lib.qx_account_set_context(self._account, _bytes(json.dumps(context))))
        _lib.qx_prepare(self._handle, self._account)

    def close(self):
        """Releases the engine; pending operations end as abandoned."""
        if self._handle:
            _lib.qx_engine_free(self._handle)
            _lib.qx_account_free(self._account)
            self._handle = self._account = None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def _call(self, function, *arguments):
        done = threading.Event()
        outcome = {}

        def deliver(_context, document, error):
            if error:
                outcome["error"] = QuorvixError._from(error.contents)
            else:
                outcome["value"] = json.loads(document.decode("utf-8"))
            done.set()

        callback = _CALLBACK(deliver)
        with self._pending_lock:
            self._pending[id(callback)] = callback  # alive until called
        try:
            function(self._handle, *arguments, callback, None)
            if not done.wait(self.timeout):
                raise TimeoutError(f"no answer within {self.timeout} s")
        finally:
            with self._pending_lock:
                self._pending.pop(id(callback), None)
        if "error" in outcome:
            raise outcome["error"]
        return outcome["value"]

    def prepare(self):
        """Prepares the engine again for its account (drops the configuration)."""
        _lib.qx_prepare(self._handle, self._account)

    def stop(self):
        """Cancels the keep-alive and drops the session."""
        _lib.qx_stop(self._handle)

    def start_session(self):
        return self._call(_lib.qx_start_session)

    def configuration(self):
        return self._call(_lib.qx_configuration)

    def faq_list(self):
        return self._call(_lib.qx_faq_list)

    def labels(self):
        return self._call(_lib.qx_labels)

    def label_faq(self, label_id):
        return self._call(_lib.qx_label_faq, _bytes(label_id))

    def answer(self, answer_id, hash=None):
        return self._call(_lib.qx_answer, _bytes(answer_id), _bytes(hash))

    @staticmethod
    def store_answer(answer_id, answer):
        """Puts an answer dictionary in the answer store."""
        _check(_lib.qx_store_answer(_bytes(answer_id), _bytes(json.dumps(answer))))

    def like(self, result_id, action, reason=None):
        return self._call(_lib.qx_like, _bytes(result_id), action, _bytes(reason))

    def set_like_state(self, result_id, liked):
        _lib.qx_set_like_state(self._handle, _bytes(result_id), 1 if liked else 0)

    def like_state(self, result_id):
        """True, False, or None when no vote is remembered."""
        state = _lib.qx_like_state(self._handle, _bytes(result_id))
        return None if state < 0 else bool(state)

    def search(self, text):
        return self._call(_lib.qx_search, _bytes(text))

    def suggest(self, text):
        return self._call(_lib.qx_suggest, _bytes(text))

    def contexts(self, names):
        return self._call(_lib.qx_contexts, _bytes(names))

    def change_context(self, context):
        return self._call(_lib.qx_change_context, _bytes(json.dumps(context)))

    def channels(self, article_id, like_state=0, context=None):
        return self._call(_lib.qx_channels, _bytes(article_id), like_state, _bytes(context))

    def report_channel(self, article_id, channel_index):
        return self._call(_lib.qx_report_channel, _bytes(article_id), channel_index)

    def track_event(self, event):
        _check(_lib.qx_track_event(self._handle, _bytes(json.dumps(event))))

    def create_conversation(self, entities=None, text_only=False):
        if entities is None and not text_only:
            return self._call(_lib.qx_conversation_create)
        return self._call(_lib.qx_conversation_create_with_entities, _bytes(json.dumps(entities or [])),
                          1 if text_only else 0)

    def statement(self, text):
        return self._call(_lib.qx_conversation_statement, _bytes(text))

    def postback(self, payload):
        return self._call(_lib.qx_conversation_postback, _bytes(payload))

    def article(self, article_id):
        return self._call(_lib.qx_conversation_article, _bytes(article_id))

    def send_entities(self, entities, statement, is_postback=False):
        return self._call(_lib.qx_conversation_send_entities, _bytes(json.dumps(entities)),
                          1 if is_postback else 0, _bytes(statement))

    def feedback(self):
        return self._call(_lib.qx_conversation_feedback)

    def set_chat_handler(self, missing_entities=None, personal_information=None):
        """Answers the bot's questions: missing_entities(reply) returns a list of
        entity objects ({"type", "value", "kind"}); personal_information(info)
        returns a value, or None for a button. None for both removes the handler."""

        def on_entities(_context, reply, request):
            try:
                entities = missing_entities(json.loads(reply.decode("utf-8")))
            except Exception:
                _lib.qx_request_free(request)
                raise
            _check(_lib.qx_answer_missing_entities(request, _bytes(json.dumps(entities))))

        def on_personal(_context, info, request):
            try:
                value = personal_information(json.loads(info.decode("utf-8")))
            except Exception:
                _lib.qx_request_free(request)
                raise
            _lib.qx_answer_personal_information(request, _bytes(value))

        if missing_entities is None and personal_information is None:
            self._handler = None
            _lib.qx_set_chat_handler(self._handle, None)
            return
        handler = _ChatHandler(None, _QUESTION(on_entities) if missing_entities else _QUESTION(),
                               _QUESTION(on_personal) if personal_information else _QUESTION())
        self._handler = handler  # the C side keeps the function pointers
        _lib.qx_set_chat_handler(self._handle, ctypes.byref(handler))
