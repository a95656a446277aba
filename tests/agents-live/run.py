#!/usr/bin/env python3
"""Runs a real agent against a stand-in model and a stand-in application, with the built helper as its hook.

usage: run.py AGENT BUILD_FOLDER

The agent's package is installed into the build folder by npm. The agent itself runs in a network namespace that has
loopback only, with a scratch home. Four things are shown: the session is told of, a granted request runs, a denied one
does not, and without an application the agent ends by itself. Where that cannot run, it prints "[skipped]" and why."""
import json
import os
import pathlib
import shutil
import socket
import subprocess
import sys
import tempfile
import threading

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import model_server  # noqa: E402

TIME_LIMIT = 180
COMMAND = "echo hello > made-by-the-agent.txt"
PROMPT = "Please make the file."


def skip(why):
    print(f"[skipped] {why}")
    sys.exit(0)


class Application:
    """Stands in for the pet: notes every line, answers requests with one verdict."""

    def __init__(self, home, verdict):
        folder = home / "Library/Application Support/Nibbo"
        folder.mkdir(parents=True)
        self.lines = []
        self.verdict = verdict
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.bind(str(folder / "nibbo.sock"))
        self.socket.listen(16)
        threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        while True:
            try:
                client, _ = self.socket.accept()
            except OSError:
                return
            with client:
                line = client.makefile("rb").readline()
                event = json.loads(line)
                self.lines.append(event)
                asks = event["type"] == "approvalRequired"
                try:
                    client.sendall(b'{"approval":"%s"}\n' % self.verdict if asks else b'{"ok":true}\n')
                except OSError:
                    pass

    def kinds(self):
        return [line["type"] for line in self.lines]


def hook(helper, agent, event):
    return f"'{helper}' --source {agent} --event {event}"


def claude_shaped(helper, agent, events, timeouts):
    return {event: [{"matcher": "*", "hooks": [{"type": "command", "command": hook(helper, agent, event),
                                                "timeout": timeouts}]}] for event in events}


CLAUDE_EVENTS = ["SessionStart", "SessionEnd", "Stop", "UserPromptSubmit", "PreToolUse", "PostToolUse", "PreCompact",
                 "Notification", "PermissionRequest"]


def write_json(path, value):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(json.dumps(value))


def claude(home, folder, helper, port):
    write_json(home / ".claude/settings.json", {"hooks": claude_shaped(helper, "claude", CLAUDE_EVENTS, 60)})
    write_json(home / ".claude.json", {"hasCompletedOnboarding": True})
    return (["claude", "-p", PROMPT, "--permission-mode", "default"],
            {"ANTHROPIC_BASE_URL": f"http://127.0.0.1:{port}", "ANTHROPIC_API_KEY": "sk-ant-test",
             "CLAUDE_CODE_DISABLE_NONESSENTIAL_TRAFFIC": "1", "DISABLE_AUTOUPDATER": "1"})


def codex(home, folder, helper, port):
    events = ["SessionStart", "Stop", "PreToolUse", "PostToolUse", "UserPromptSubmit", "PermissionRequest"]
    write_json(home / ".codex/hooks.json", {"hooks": {event: [{"hooks": [
        {"type": "command", "command": hook(helper, "codex", event), "timeout": 60}]}] for event in events}})
    (home / ".codex/config.toml").write_text(
        'model = "some-model"\nmodel_provider = "stand_in"\n[model_providers.stand_in]\nname = "stand-in"\n'
        f'base_url = "http://127.0.0.1:{port}/v1"\nwire_api = "responses"\n')
    return (["codex", "exec", "--skip-git-repo-check", "--dangerously-bypass-hook-trust",
             "--dangerously-bypass-approvals-and-sandbox", PROMPT], {})


def gemini(home, folder, helper, port):
    events = ["SessionStart", "SessionEnd", "BeforeAgent", "AfterAgent", "Notification", "BeforeTool", "AfterTool"]
    write_json(home / ".gemini/settings.json", {
        "security": {"auth": {"selectedType": "gemini-api-key"}}, "general": {"enableAutoUpdate": False},
        "hooks": {event: [{"matcher": "", "hooks": [{"type": "command", "command": hook(helper, "gemini", event),
                                                     "timeout": 60000}]}] for event in events}})
    # A named model spares the run the choice of one, for which the model would be asked.
    return (["gemini", "-m", "gemini-2.5-flash", "-p", PROMPT, "--approval-mode", "yolo", "--skip-trust"],
            {"GEMINI_API_KEY": "test", "GOOGLE_GEMINI_BASE_URL": f"http://127.0.0.1:{port}"})


def qwen(home, folder, helper, port):
    write_json(home / ".qwen/settings.json", {
        "security": {"auth": {"selectedType": "openai"}}, "general": {"enableAutoUpdate": False},
        "hooks": claude_shaped(helper, "qwen", CLAUDE_EVENTS, 60)})
    return (["qwen", "-p", PROMPT, "--approval-mode", "yolo"],
            {"OPENAI_API_KEY": "test", "OPENAI_BASE_URL": f"http://127.0.0.1:{port}/v1", "OPENAI_MODEL": "some-model"})


def copilot(home, folder, helper, port):
    events = ["sessionStart", "sessionEnd", "userPromptSubmitted", "preToolUse", "postToolUse", "agentStop",
              "preCompact", "notification", "permissionRequest"]
    write_json(home / ".copilot/hooks/nibbo-bridge.json", {"version": 1, "hooks": {event: [
        {"type": "command", "bash": hook(helper, "copilot", event), "timeoutSec": 60}] for event in events}})
    return (["copilot", "-p", PROMPT, "--allow-all-tools"],
            {"COPILOT_OFFLINE": "true", "COPILOT_PROVIDER_BASE_URL": f"http://127.0.0.1:{port}/v1",
             "COPILOT_MODEL": "some-model"})


def cline(home, folder, helper, port):
    for event in ["TaskStart", "TaskResume", "TaskCancel", "UserPromptSubmit", "PreToolUse", "PostToolUse"]:
        script = home / ".cline/hooks" / event
        script.parent.mkdir(parents=True, exist_ok=True)
        script.write_text(f"#!/bin/sh\nexec {hook(helper, 'cline', event)}\n")
        script.chmod(0o755)
    return (["sh", "-c", 'cline auth -p openai-compatible -k test -b "$1" -m some-model >/dev/null && exec cline "$2"',
             "sh", f"http://127.0.0.1:{port}/v1", PROMPT], {})


# Package, how to set it up, and what it does: whether its request can be granted and denied in an unattended run, and
# whether the command runs when nobody decides.
AGENTS = {
    "claude": ("@anthropic-ai/claude-code@2.1.329", claude, True, False),
    "codex": ("@openai/codex@0.169.0", codex, False, True),
    "gemini": ("@google/gemini-cli@0.61.0", gemini, True, True),
    "qwen": ("@qwen-code/qwen-code@0.24.4", qwen, False, True),
    "copilot": ("@github/copilot@1.0.102", copilot, True, True),
    "cline": ("cline@3.0.65", cline, True, True),
}


def install(agent, package, build):
    folder = build / "agents-live" / agent
    folder.mkdir(parents=True, exist_ok=True)
    if not (folder / "node_modules/.bin" / agent).exists():
        result = subprocess.run(["npm", "install", "--no-audit", "--no-fund", "--prefix", str(folder), package],
                                capture_output=True, text=True, check=False)
        if result.returncode != 0:
            skip(f"npm could not install {package}: {result.stderr.strip()[-300:]}")
    return folder / "node_modules/.bin"


def check(condition, what, application, output):
    if condition:
        print(f"ok: {what}")
        return
    print(f"FAILED: {what}\nlines: {json.dumps(application.lines if application else None, indent=1)}\n{output[-3000:]}")
    sys.exit(1)


def run_agent(set_up, helper, binaries, verdict):
    """One run in a scratch home. Gives the stand-in application, whether the command ran, and what was printed."""
    port = model_server.start(COMMAND)
    with tempfile.TemporaryDirectory(prefix="nibbo-live-", ignore_cleanup_errors=True) as name:
        home = pathlib.Path(name)
        folder = home / "project"
        folder.mkdir()
        application = Application(home, verdict) if verdict else None
        command, environment = set_up(home, folder, helper, port)
        environment = {"HOME": str(home), "PATH": f"{binaries}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8",
                       "TERM": "xterm", "NO_COLOR": "1", **environment}
        try:
            result = subprocess.run(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL, text=True,
                                    stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=TIME_LIMIT, check=False)
            output = result.stdout
        except subprocess.TimeoutExpired as expired:
            output = f"did not end in {TIME_LIMIT} s\n{(expired.stdout or b'').decode(errors='replace')}"
        if application:
            application.socket.close()
        return application, (folder / "made-by-the-agent.txt").exists(), output


def inside(agent, build):
    """In the namespace: loopback is brought up, nothing else is there."""
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    package, set_up, answers, runs_undecided = AGENTS[agent]
    helper = build / "libexec/nibbo/nibbo-bridge"
    binaries = build / "agents-live" / agent / "node_modules/.bin"

    application, ran, output = run_agent(set_up, helper, binaries, b"granted")
    kinds = application.kinds()
    check("agentStarted" in kinds, "the session is told of", application, output)
    check(ran, "the granted command ran", application, output)
    if answers:
        request = next((line for line in application.lines if line["type"] == "approvalRequired"), {})
        check(request.get("command") == COMMAND, "the request names the command", application, output)
        application, ran, output = run_agent(set_up, helper, binaries, b"denied")
        check("approvalRequired" in application.kinds() and not ran, "the denied command did not run", application, output)
    _, ran, output = run_agent(set_up, helper, binaries, None)
    check(ran == runs_undecided and not output.startswith("did not end"),
          "without an application the agent does as without a hook", None, output)


def main():
    agent, build = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
    if len(sys.argv) > 3:
        inside(agent, build)
        return
    for tool in ("npm", "node", "unshare", "ip"):
        if not shutil.which(tool):
            skip(f"{tool} is not installed")
    namespace = ["unshare", "--net"] if os.geteuid() == 0 else ["unshare", "--map-root-user", "--net"]
    if subprocess.run([*namespace, "true"], capture_output=True, check=False).returncode != 0:
        skip("no network namespace can be made here")
    install(agent, AGENTS[agent][0], build)
    sys.exit(subprocess.run([*namespace, sys.executable, __file__, agent, str(build), "inside"], check=False).returncode)


if __name__ == "__main__":
    main()
