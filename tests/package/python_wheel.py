#!/usr/bin/env python3
"""usage: python_wheel.py DIST README FOLDER
Installs the wheel in DIST into a fresh environment in FOLDER and runs the example of README there on a clip."""
import pathlib
import re
import shutil
import subprocess
import sys


def run(*command, **options):
    return subprocess.run([str(word) for word in command], check=True, text=True, stdout=subprocess.PIPE, **options).stdout


def main(dist, readme, folder):
    folder = pathlib.Path(folder)
    shutil.rmtree(folder, ignore_errors=True)
    # PyAV and NumPy, which decode, are the system's.
    run("/usr/bin/python3", "-m", "venv", "--system-site-packages", folder)
    python = folder / "bin/python"
    wheel, = pathlib.Path(dist).glob("*.whl")
    run(python, "-m", "pip", "install", "-q", "--no-index", "--no-deps", wheel)

    maps = run(python, "-c", "import zel; print(open('/proc/self/maps').read())")
    for library in ("zel-c", "kissfft-float", "hwy"):
        paths = {line.split()[-1] for line in maps.splitlines() if re.search(rf"/lib{library}\.so", line)}
        assert len(paths) == 1 and paths.pop().startswith(str(folder.resolve())), f"{library} is not the wheel's: {paths}"

    clip = folder / "clip.mkv"
    run("ffmpeg", "-v", "error", "-f", "lavfi", "-i",
        "testsrc2=s=320x180:r=25:d=6,drawbox=color=black:t=fill:enable='between(t,1.99,3.99)',format=yuv420p", clip)
    example, = re.findall(r"^```python\n(.*?)^```", pathlib.Path(readme).read_text(), re.M | re.S)
    told = run(python, "-c", example, clip)
    assert told == "black from 2.00 to 4.00 s\n", told


if __name__ == "__main__":
    main(*sys.argv[1:])
