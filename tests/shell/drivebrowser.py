"""Drives Chromium with Corvane's extension through the DevTools protocol, as a person's clicks would.

drivebrowser.py CHROMIUM PROFILE EXTENSION PAGE FILE LIST opens PAGE, prints as one JSON list the
answers of handOver(FILE, PAGE) and grabPage(PAGE), what the context menu calls, then with
capturing on clicks the link "captura" and waits for Corvane's list file LIST to name it.
"""
import json, os, subprocess, sys, time
import websocket

chromium, profile, extension, page, file, listed = sys.argv[1:7]
browser = subprocess.Popen([
    chromium, "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic",
    "--no-first-run", "--disable-background-networking", "--disable-component-update",
    "--disable-sync", f"--user-data-dir={profile}", "--remote-debugging-port=0",
    f"--load-extension={extension}", f"--disable-extensions-except={extension}", "about:blank"],
    stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def until(what, name):
    for _ in range(300):
        found = what()
        if found:
            return found
        time.sleep(0.1)
    sys.exit(f"timed out waiting for {name}")


def endpoint():
    try:
        with open(os.path.join(profile, "DevToolsActivePort")) as lines:
            port, path = lines.read().split()[:2]
            return f"ws://127.0.0.1:{port}{path}"
    except (FileNotFoundError, ValueError):
        return None


try:
    socket = websocket.create_connection(until(endpoint, "the browser"), timeout=60)
    calls = 0

    def call(method, session=None, **params):
        global calls
        calls += 1
        socket.send(json.dumps({"id": calls, "method": method, "params": params,
                                **({"sessionId": session} if session else {})}))
        while (reply := json.loads(socket.recv())).get("id") != calls:
            pass
        if "error" in reply or "exceptionDetails" in reply["result"]:
            sys.exit(f"{method} {params}: {reply}")
        return reply["result"]

    def evaluate(session, expression):
        return call("Runtime.evaluate", session, expression=expression, awaitPromise=True,
                    returnByValue=True)["result"].get("value")

    def target(kind, prefix=""):
        return next((t["targetId"] for t in call("Target.getTargets")["targetInfos"]
                     if t["type"] == kind and t["url"].startswith(prefix)), None)

    def attach(target_id):
        return call("Target.attachToTarget", targetId=target_id, flatten=True)["sessionId"]

    # The window the browser opened: a tab made through the protocol keeps its cookies apart.
    tab = attach(target("page"))
    call("Page.navigate", tab, url=page)
    until(lambda: evaluate(tab, f"location.href == {json.dumps(page)} && "
                                "document.readyState == 'complete'"), "the page")
    background = attach(until(lambda: target("service_worker", "chrome-extension://"),
                              "the extension"))
    # The worker is there a moment before its script has run.
    until(lambda: evaluate(background, "typeof handOver") == "function", "the extension's script")
    print(json.dumps([evaluate(background, f"handOver({json.dumps(file)}, {json.dumps(page)})"),
                      evaluate(background, f"grabPage({json.dumps(page)})")]))
    evaluate(background, "chrome.storage.local.set({capture: true})")
    evaluate(tab, "document.getElementById('captura').click()")
    until(lambda: "captura.zip" in open(listed, encoding="latin-1").read(), "the capture")
    call("Browser.close")
finally:
    try:
        browser.wait(10)
    except subprocess.TimeoutExpired:
        browser.kill()
