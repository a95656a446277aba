"""A stand-in for the model servers of the agents: speaks as much of four protocols as it takes to make an agent run one
shell command and then say that it is done. Which tool it calls follows from what the agent offers."""
import http.server
import json
import threading

WORDS = "All done here."

# The names of the agents' shell tools, and how each wants its command.
SHELL_TOOLS = {
    "Bash": lambda command: {"command": command, "description": "Make a file"},
    "bash": lambda command: {"command": command, "description": "Make a file"},
    "run_shell_command": lambda command: {"command": command, "description": "Make a file", "is_background": False},
    "run_commands": lambda command: {"commands": [command]},
    "shell": lambda command: {"command": ["bash", "-lc", command]},
    "shell_command": lambda command: {"command": command},
    "exec_command": lambda command: {"cmd": command},
}


def shell_tool(names):
    return next((name for name in names if name in SHELL_TOOLS), None)


class Answers:
    """What to say to a request, whatever its protocol: a tool call or None for the closing words."""

    def __init__(self, command):
        self.command = command

    def call(self, tool_names, has_results):
        name = shell_tool(tool_names)
        if has_results or name is None:
            return None
        arguments = SHELL_TOOLS[name](self.command)
        if name == "run_shell_command" and "list_directory" in tool_names:
            arguments.pop("is_background")
        return name, arguments


def anthropic(body, answers):
    names = [tool.get("name") for tool in body.get("tools") or []]
    has_results = "tool_result" in json.dumps(body.get("messages"))
    call = answers.call(names, has_results)
    yield "message_start", {"type": "message_start", "message": {
        "id": "msg_1", "type": "message", "role": "assistant", "model": body.get("model"), "content": [],
        "stop_reason": None, "stop_sequence": None, "usage": {"input_tokens": 10, "output_tokens": 1}}}
    if call:
        block = {"type": "tool_use", "id": "toolu_01", "name": call[0], "input": {}}
        delta = {"type": "input_json_delta", "partial_json": json.dumps(call[1])}
    else:
        block = {"type": "text", "text": ""}
        delta = {"type": "text_delta", "text": WORDS}
    yield "content_block_start", {"type": "content_block_start", "index": 0, "content_block": block}
    yield "content_block_delta", {"type": "content_block_delta", "index": 0, "delta": delta}
    yield "content_block_stop", {"type": "content_block_stop", "index": 0}
    yield "message_delta", {"type": "message_delta", "usage": {"output_tokens": 5}, "delta": {
        "stop_reason": "tool_use" if call else "end_turn", "stop_sequence": None}}
    yield "message_stop", {"type": "message_stop"}


def openai_chat(body, answers):
    names = [tool.get("function", {}).get("name") for tool in body.get("tools") or []]
    has_results = any(message.get("role") == "tool" for message in body.get("messages") or [])
    call = answers.call(names, has_results)
    common = {"id": "chat_1", "object": "chat.completion.chunk", "created": 1, "model": body.get("model")}
    if call:
        delta = {"role": "assistant", "content": None, "tool_calls": [{
            "index": 0, "id": "call_01", "type": "function",
            "function": {"name": call[0], "arguments": json.dumps(call[1])}}]}
    else:
        delta = {"role": "assistant", "content": WORDS}
    yield None, {**common, "choices": [{"index": 0, "delta": delta, "finish_reason": None}]}
    yield None, {**common, "choices": [{"index": 0, "delta": {}, "finish_reason": "tool_calls" if call else "stop"}],
                 "usage": {"prompt_tokens": 10, "completion_tokens": 5, "total_tokens": 15}}
    yield None, "[DONE]"


def openai_responses(body, answers):
    names = [tool.get("name") for tool in body.get("tools") or []]
    has_results = any("call_output" in str(item.get("type")) for item in body.get("input") or []
                      if isinstance(item, dict))
    call = answers.call(names, has_results)
    if call:
        item = {"type": "function_call", "id": "fc_1", "call_id": "call_01", "name": call[0],
                "arguments": json.dumps(call[1])}
    else:
        item = {"type": "message", "id": "m_1", "role": "assistant",
                "content": [{"type": "output_text", "text": WORDS, "annotations": []}]}
    yield "response.created", {"type": "response.created", "response": {"id": "resp_1"}}
    yield "response.output_item.done", {"type": "response.output_item.done", "output_index": 0, "item": item}
    yield "response.completed", {"type": "response.completed", "response": {"id": "resp_1", "output": [item], "usage": {
        "input_tokens": 10, "input_tokens_details": None, "output_tokens": 5, "output_tokens_details": None,
        "total_tokens": 15}}}


def gemini(body, answers):
    names = [declaration.get("name") for tool in body.get("tools") or []
             for declaration in tool.get("functionDeclarations") or []]
    has_results = "functionResponse" in json.dumps(body.get("contents"))
    call = answers.call(names, has_results)
    part = {"functionCall": {"name": call[0], "args": call[1]}} if call else {"text": WORDS}
    yield None, {"candidates": [{"content": {"role": "model", "parts": [part]}, "finishReason": "STOP", "index": 0}],
                 "usageMetadata": {"promptTokenCount": 10, "candidatesTokenCount": 5, "totalTokenCount": 15}}


PROTOCOLS = [("/messages", anthropic), ("/chat/completions", openai_chat), ("/responses", openai_responses),
             ("GenerateContent", gemini), ("generateContent", gemini)]


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass

    def send(self, kind, text):
        data = text.encode()
        self.send_response(200)
        self.send_header("Content-Type", kind)
        self.send_header("Content-Length", str(len(data)))
        self.end_headers()
        self.wfile.write(data)

    def do_GET(self):
        self.send("application/json", json.dumps({"data": [{"id": "some-model", "object": "model"}], "models": []}))

    def do_POST(self):
        body = self.rfile.read(int(self.headers.get("Content-Length") or 0))
        path = self.path.split("?")[0]
        try:
            body = json.loads(body or b"{}")
        except ValueError:
            body = {}
        speak = next((protocol for ending, protocol in PROTOCOLS if path.endswith(ending)), None)
        if speak is None:
            self.send("application/json", json.dumps({"input_tokens": 10, "totalTokens": 10}))
            return
        events = list(speak(body, self.server.answers))
        if speak is gemini and "stream" not in path:
            self.send("application/json", json.dumps(events[0][1]))
            return
        if speak is openai_chat and not body.get("stream"):
            delta = events[0][1]["choices"][0]["delta"]
            self.send("application/json", json.dumps({
                "id": "chat_1", "object": "chat.completion", "created": 1, "model": body.get("model"), "choices": [
                    {"index": 0, "message": delta, "finish_reason": "tool_calls" if "tool_calls" in delta else "stop"}],
                "usage": {"prompt_tokens": 10, "completion_tokens": 5, "total_tokens": 15}}))
            return
        text = ""
        for name, data in events:
            text += f"event: {name}\n" if name else ""
            text += f"data: {data if isinstance(data, str) else json.dumps(data)}\n\n"
        self.send("text/event-stream", text)


def start(command):
    """Serves in the background; gives the port."""
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    server.answers = Answers(command)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server.server_address[1]
