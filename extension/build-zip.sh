#!/bin/sh
# Packs the extension for the browsers' stores: corvane-extension-<version>.zip in the folder given
# (the current one by default). Nothing is uploaded. The stores refuse the manifest's "key" (they
# keep the extension's key themselves), so the zip's manifest goes without it.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
out=$(cd "${1:-.}" && pwd)
python3 - "$here" "$out" <<'PY'
import json, pathlib, sys, zipfile
here, out = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
manifest = json.loads((here / "manifest.json").read_text(encoding="utf-8"))
manifest.pop("key")
target = out / f"corvane-extension-{manifest['version']}.zip"
with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED) as zip:
    zip.writestr("manifest.json", json.dumps(manifest, ensure_ascii=False, indent=2) + "\n")
    for name in ["background.js", "options.html", "options.js", *sorted(
            str(icon.relative_to(here)) for icon in (here / "icons").glob("*.png"))]:
        zip.write(here / name, name)
print(target)
PY
