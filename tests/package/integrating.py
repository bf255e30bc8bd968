#!/usr/bin/env python3
"""usage: integrating.py ROOT LIBDIR FOLDER
Builds the hosts of docs/integrating.md in FOLDER with what is installed under LIBDIR: all must print the same of one clip."""
import os
import pathlib
import re
import subprocess
import sys

# Eight seconds: two of black, and three that stand still.
CLIP = ("mandelbrot=s=320x180:r=25,trim=duration=5,drawbox=color=black:t=fill:enable='between(t,0.99,2.99)',"
        "tpad=stop_mode=clone:stop_duration=3,format=yuv420p")
EXPECTED = "black from 1.00 to 3.00 s\nfreeze from 4.96 to 8.00 s\n"


def run(*command, **variables):
    return subprocess.run([str(word) for word in command], check=True, text=True, stdout=subprocess.PIPE, timeout=300,
                          env={**os.environ, **{name: str(value) for name, value in variables.items()}}).stdout


def main(root, libdir, folder):
    root, libdir, folder = pathlib.Path(root), pathlib.Path(libdir), pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    text = (root / "docs/integrating.md").read_text()
    blocks = re.findall(r"^```(cpp|c|python)\n(.*?)^```", text, re.M | re.S)
    assert [language for language, _ in blocks] == ["cpp", "c", "python", "c"]
    assert all(block.count("\n") <= 60 for _, block in blocks)

    clip = folder / "clip.yuv"
    run("ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", CLIP, "-f", "rawvideo", clip)
    arguments = (clip, 320, 180, 25)
    # Where libc++ is installed for development, the libunwind that GStreamer's .pc file names is not.
    (folder / "libunwind.pc").write_text("Name: libunwind\nDescription: not needed to build\nVersion: 1\n")

    def built(number, name, compiler, package):
        source = folder / name
        source.write_text(blocks[number][1])
        flags = run("pkg-config", "--cflags", "--libs", package, PKG_CONFIG_PATH=f"{libdir}/pkgconfig:{folder}").split()
        program = folder / source.name.replace(".", "_")
        run(*compiler, "-Wall", "-Wextra", "-Werror", source, *flags, "-o", program)
        return program

    def check(name, told):
        assert told == EXPECTED, f"{name}: {told!r}"

    check("C++", run(built(0, "host.cc", ("c++", "-std=c++20"), "zel-player"), *arguments))
    check("C", run(built(1, "host.c", ("cc", "-std=c11"), "zel-c"), *arguments, LD_LIBRARY_PATH=libdir))
    (folder / "host.py").write_text(blocks[2][1])
    check("Python", run("/usr/bin/python3", folder / "host.py", *arguments, ZEL_LIBRARY=libdir / "libzel-c.so.1",
                        PYTHONPATH=root / "bindings/python/src", PYTHONDONTWRITEBYTECODE=1))
    if (libdir / "gstreamer-1.0").exists():
        check("GStreamer", run(built(3, "gst_host.c", ("cc", "-std=c11"), "gstreamer-1.0"), *arguments,
                               GST_PLUGIN_PATH=libdir / "gstreamer-1.0", GST_REGISTRY=folder / "registry",
                               GST_REGISTRY_FORK="no"))


if __name__ == "__main__":
    main(*sys.argv[1:])
