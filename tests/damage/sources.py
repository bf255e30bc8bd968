"""Short intact files, one for each container and coding, whose frames carry their numbers.

Every frame shows its number in three bands across the picture, as eight bits and their complement. So what
comes out of a damaged file can be counted frame by frame, and a frame that a decoder repeats or makes up is
told from one that is there.
"""
import dataclasses
import json
import pathlib
import subprocess

SECONDS = 3
RATE = 25
WIDTH, HEIGHT = 160, 96
CELLS = 16  # across the picture: the bits of the number, then their complement
BAND = 32  # rows from one band to the next; its upper half shows the number

_BIT = f"mod(floor(N/pow(2,mod(floor(X/{WIDTH // CELLS}),8))),2)"
_PICTURES = (
    f"testsrc2=s={WIDTH}x{HEIGHT}:r={RATE}:d={SECONDS},format=yuv420p,"
    f"geq=lum='if(lt(mod(Y,{BAND}),{BAND // 2}),"
    f"40+170*if(lt(X,{WIDTH // 2}),{_BIT},1-{_BIT}),lum(X,Y))':cb='cb(X,Y)':cr='cr(X,Y)'"
)
_SOUND = f"sine=300:r=44100:d={SECONDS},tremolo=f=5:d=0.5"

_X264 = "-c:v libx264 -preset veryfast -g 25 -bf 2 -threads 1"
_AAC = "-c:a aac -b:a 64k"
_MP3 = "-c:a libmp3lame -b:a 64k"

# name: (suffix, what ffmpeg is told)
_RECIPES = {
    "mp4-h264-aac": ("mp4", f"{_X264} {_AAC}"),
    "mp4-front-mpeg4-mp3": ("mp4", f"-c:v mpeg4 -g 12 {_MP3} -movflags faststart"),
    "mp4-fragments-h264-aac": ("mp4", f"{_X264} {_AAC} -movflags frag_keyframe+empty_moov+default_base_moof"),
    "mp4-fragments-h264": ("mp4", f"-an {_X264} -movflags frag_every_frame+empty_moov"),
    "mp4-hevc": ("mp4", "-an -c:v libx265 -preset ultrafast -x265-params log-level=none:pools=1:frame-threads=1:keyint=25"),
    "m4a-aac": ("m4a", f"-vn {_AAC}"),
    "mov-mpeg4-pcm": ("mov", "-c:v mpeg4 -g 12 -c:a pcm_s16le -ar 16000"),
    "mkv-h264-aac": ("mkv", f"{_X264} {_AAC}"),
    "mkv-mpeg4-mp3": ("mkv", f"-c:v mpeg4 -g 12 {_MP3} -cluster_time_limit 500"),
    "mkv-mpeg2-pcm": ("mkv", "-c:v mpeg2video -g 12 -c:a pcm_s16le -ar 16000"),
    "mkv-live-h264-vorbis": ("mkv", f"{_X264} -c:a libvorbis -live 1"),
    "webm-vp9-opus": ("webm", "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -g 25 -b:v 300k -c:a libopus"),
    "webm-opus": ("webm", "-vn -c:a libopus"),
    "flv-h264-aac": ("flv", f"{_X264} {_AAC}"),
    "flv-flv1-mp3": ("flv", f"-c:v flv1 -g 12 {_MP3}"),
    "ts-h264-aac": ("ts", f"{_X264} {_AAC}"),
    "ts-mpeg2-mp2": ("ts", "-c:v mpeg2video -g 12 -c:a mp2"),
    "ps-mpeg2-mp2": ("mpg", "-c:v mpeg2video -g 12 -c:a mp2 -f vob"),
    "avi-mpeg4-mp3": ("avi", f"-c:v mpeg4 -g 12 {_MP3}"),
    "avi-h264-pcm": ("avi", f"{_X264} -bf 0 -c:a pcm_s16le -ar 16000"),
    "ogg-vorbis": ("ogg", "-vn -c:a libvorbis"),
    "ogg-opus": ("opus", "-vn -c:a libopus"),
    "ogg-theora-vorbis": ("ogv", "-c:v libtheora -g 25 -q:v 5 -c:a libvorbis"),
    "asf-wmv2-wma": ("wmv", "-c:v wmv2 -g 12 -c:a wmav2"),
    "mxf-mpeg2-pcm": ("mxf", "-c:v mpeg2video -g 12 -c:a pcm_s16le -ar 48000"),
    "nut-mpeg4-mp3": ("nut", f"-c:v mpeg4 -g 12 {_MP3}"),
    "wav-pcm": ("wav", "-vn -c:a pcm_s16le -ar 16000"),
    "aiff-pcm": ("aiff", "-vn -c:a pcm_s16be -ar 16000"),
    "mp3": ("mp3", f"-vn {_MP3}"),
    "mp3-bare": ("mp3", f"-vn {_MP3} -write_xing 0 -id3v2_version 0"),
    "flac": ("flac", "-vn -c:a flac"),
    "adts-aac": ("aac", f"-vn {_AAC}"),
    "h264": ("h264", f"-an {_X264} -bf 0"),
}

# What is lost of these leaves no trace: they hold nothing but frames one after another, or do not say where they
# end, so that what is left is a whole file.
_BARE = {"mp3-bare", "adts-aac", "h264"}
_OPEN_ENDED = {"ts-h264-aac", "ts-mpeg2-mp2", "ps-mpeg2-mp2", "mkv-live-h264-vorbis", *_BARE}


@dataclasses.dataclass(frozen=True)
class Source:
    name: str
    path: pathlib.Path
    data: bytes
    packets: tuple  # (offset, size) of those whose place in the file is known


def names():
    return list(_RECIPES)


def leaves_a_trace(name, kind):
    """Whether anybody could tell of such damage from the damaged file alone."""
    return not (kind == "cut" and name in _OPEN_ENDED or kind == "drop-packets" and name in _BARE)


def make_base(folder):
    """Makes what all files are coded from, before any of them is made."""
    base = folder / "base.nut"
    if not base.exists():
        _ffmpeg(["-f", "lavfi", "-i", _PICTURES, "-f", "lavfi", "-i", _SOUND,
                 "-c:v", "rawvideo", "-c:a", "pcm_s16le"], base)


def make(name, folder):
    """Makes the file in `folder`, or takes the one that is there."""
    suffix, words = _RECIPES[name]
    path = folder / f"{name}.{suffix}"
    if not path.exists():
        _ffmpeg(["-i", str(folder / "base.nut"), *words.split(), "-fflags", "+bitexact", "-flags:v", "+bitexact", "-flags:a", "+bitexact"], path)
    return Source(name, path, path.read_bytes(), _packets(path))


def _ffmpeg(words, path):
    part = path.with_name("part-" + path.name)
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", *words, str(part)], check=True)
    part.rename(path)


def _packets(path):
    shown = subprocess.run(["ffprobe", "-v", "quiet", "-show_entries", "packet=pos,size", "-of", "json", str(path)],
                           capture_output=True, check=True).stdout
    packets = json.loads(shown)["packets"]
    return tuple((int(p["pos"]), int(p["size"])) for p in packets if "pos" in p)
