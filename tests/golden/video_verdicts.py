#!/usr/bin/env python3
"""Draws frames and works out what the video detectors must say about each.

usage: video_verdicts.py DIRECTORY

An independent, slow and plain reading of the detectors' rules: nothing here is shared with the library. Writes
DIRECTORY/verdicts.txt and DIRECTORY/frames.i420. Each stream is a line

    stream NAME WIDTH HEIGHT BLOCK_PARAM STATIC_PARAM

followed by one line per frame

    SCREEN EXPOSURE BLOCK STATIC

whose bytes follow one another in frames.i420.
"""
import math
import pathlib
import struct
import sys

# ---------------------------------------------------------------- arithmetic


def f32(value):
    """The nearest single-precision number."""
    return struct.unpack("f", struct.pack("f", value))[0]


def div32(a, b):
    """a / b of two whole numbers taken as floats; NaN for 0 / 0."""
    return f32(f32(a) / f32(b)) if b else math.nan


def quotient(a, b):
    """Whole-number division that truncates toward zero."""
    return abs(a) // abs(b) * (1 if (a < 0) == (b < 0) else -1)


# ---------------------------------------------------------------- screen type and exposure


def screen_and_exposure(data, width, height):
    n = (width // 2) * (height // 2)
    hist = [0] * 256
    for i in range(n):
        hist[data[2 * i]] += 1
    ratio = f32(0.95)
    zeros = sum(1 for k in range(n // 2) if data[4 * (n + k)] == 0)
    if div32(hist[0], n) >= ratio and div32(2 * zeros, n) >= ratio:
        return 2, 0
    dark = 0.0
    for level in range(30):
        dark = f32(dark + div32(hist[level], n))
    if dark >= ratio:
        return 1, 0
    return 0, exposure(hist, n) if n else 0


def logistic(height, z, constant):
    try:
        return height / (math.exp(f32(f32(-f32(z)) + constant)) + 1.0)
    except OverflowError:
        return 0.0


def exposure(hist, n):
    bright = div32(sum(hist[200:]), n)
    dark = div32(sum(hist[:61]), n)
    mean = quotient(sum(i * count for i, count in enumerate(hist)), n)
    third = 0
    for i, count in enumerate(hist):
        third = math.trunc(third + math.pow(i - mean, 3.0) * count / n)
    p1 = f32(logistic(1.0, third * -0.00317050171 - (dark * 0.240803877 + mean * 18.8082557 + bright * 0.14893716),
                      -1701.84716796875))
    p2 = logistic(1.0, dark * 0.0604087494 + mean * 21.1358568 + bright * 0.229863823 - third * 0.000404649814,
                  2218.60888671875)
    if p1 == 0.0:
        p3 = f32(logistic(2.0, mean * 33.3495193 + dark * 0.0253559315 + bright * 0.703219051 - third * 0.00546597139,
                          6213.6103515625))
        if p3 == 0.0:
            return 0
    return int(f32(p2 + 1.0))


# ---------------------------------------------------------------- blocks


def is_blocky(data, width, height, limit):
    w, h = width // 2, height // 2
    if w < 8 or h < 8:
        return 0
    weights = [math.exp(-((i - 2) ** 2) / 2.0) for i in range(5)]
    total = 0.0
    for weight in weights:
        total += weight
    weights = [weight / total for weight in weights]

    def blend(five):
        value = 0.0
        for weight, pixel in zip(weights, five):
            value += weight * pixel
        return int(value)

    crop = [[data[(r + h // 2) * 2 * w + w // 2 + c] for c in range(w)] for r in range(h)]
    flat = []
    for row in crop:
        padded = [row[2], row[1]] + row + [row[-2], row[-3]]
        flat += [blend(padded[x:x + 5]) for x in range(w)]
    if h - 2 > 2:
        for x in range(w):
            for y in range(2, h - 2):
                at = y * w + x
                flat[at] = blend(flat[at - 2:at + 3])
    smooth = [flat[y * w:(y + 1) * w] for y in range(h)]

    framed = [[row[0]] + row + [row[-1]] for row in smooth]
    framed = [framed[0]] + framed + [framed[-1]]
    gx = [[0] * w for _ in range(h)]
    gy = [[0] * w for _ in range(h)]
    mag = [[0] * w for _ in range(h)]
    for y in range(h):
        for x in range(w):
            (a, b, c), (d, _, e), (f, g, i) = (framed[y + k][x:x + 3] for k in range(3))
            gx[y][x] = 2 * (d - e) + a - c + f - i
            gy[y][x] = 2 * (b - g) + a + c - f - i
            mag[y][x] = int(math.sqrt(min(gx[y][x] ** 2 + gy[y][x] ** 2, 65025)) + 0.5)

    p = q = 0
    for y in range(1, h - 1):
        for x in range(1, w - 1):
            if mag[y][x] == 0:
                continue
            if abs(gy[y][x]) > abs(gx[y][x]):
                p, q = mag[y - 1][x], mag[y + 1][x]
            elif abs(gx[y][x]) > abs(gy[y][x]):
                p, q = mag[y][x - 1], mag[y][x + 1]
            if not (mag[y][x] >= p and mag[y][x] >= q):
                mag[y][x] = 0

    largest = max(max(row) for row in mag)
    low, high = f32(largest * f32(0.2)), f32(largest * f32(0.3))
    edges = [row[:] for row in smooth]
    for y in range(1, h - 1):
        for x in range(1, w - 1):
            v = mag[y][x]
            around = [mag[y + j][x + i] for j in (-1, 0, 1) for i in (-1, 0, 1) if i or j]
            if v < low:
                edges[y][x] = 0
            elif v > high:
                edges[y][x] = 1
            else:
                edges[y][x] = 0 if all(n >= high for n in around) else 1

    dl, ul, dr, ur = [], [], [], []
    for y in range(3, h - 4, 2):
        for x in range(3, w - 4, 2):
            if not all(edges[y][x:x + 4]):
                continue
            if edges[y + 1][x] and edges[y + 2][x] and edges[y + 3][x] and len(dl) < 500:
                dl.append((y, x))
            elif edges[y - 1][x] and edges[y - 2][x] and edges[y - 3][x] and len(ul) < 500:
                ul.append((y, x))
            elif edges[y + 1][x + 3] and edges[y + 2][x + 3] and edges[y + 3][x + 3] and len(dr) < 500:
                dr.append((y, x))
            elif edges[y - 1][x + 3] and edges[y - 2][x + 3] and edges[y - 3][x + 3] and len(ur) < 500:
                ur.append((y, x))

    def side(s, t):
        return abs(s[0] - t[0]) <= 3 and 1 <= abs(s[1] - t[1]) <= 20

    def stack(s, t):
        return abs(s[1] - t[1]) <= 3 and 1 <= abs(s[0] - t[0]) <= 20

    n = 0
    for a in dl:
        for b in ul:
            if side(a, b):
                for c in dr:
                    if stack(a, c):
                        n += 1
                        if n >= limit:
                            return 1
                for d in ur:
                    if stack(b, d):
                        n += 1
                        if n >= 20:
                            return 1
    for c in dr:
        for d in ur:
            if side(c, d):
                for first, others in ((c, dl), (d, ul)):
                    for other in others:
                        if stack(first, other):
                            n += 1
                            if n >= limit:
                                return 1
    return 0


# ---------------------------------------------------------------- static frames


class StillCounter:
    """For streams whose frames differ by one amount everywhere, so that the compared places do not matter."""

    def __init__(self, limit):
        self.limit, self.run, self.before = limit, 0, 0

    def is_static(self, luma, width, height):
        area = (3 * height // 4 - height // 4) * (3 * width // 4 - width // 4)
        value = 4 * area * abs(luma - self.before) // (width * height)
        self.before = luma
        self.run = self.run + 1 if value < 3 else 0
        if self.run < self.limit:
            return 0
        self.run = 0
        return 1


# ---------------------------------------------------------------- frames


class Noise:
    def __init__(self, seed):
        self.state = seed

    def below(self, bound):
        self.state = (self.state * 6364136223846793005 + 1442695040888963407) % 2**64
        return (self.state >> 33) % bound


def i420(width, height, luma, chroma=lambda k: 128):
    size = width * height
    return bytes([luma(x, y) for y in range(height) for x in range(width)] +
                 [chroma(k) for k in range(size * 3 // 2 - size)])


def clamp(value):
    return max(0, min(255, int(value)))


def mosaic(width, height, block, seed, spread, middle=128):
    noise = Noise(seed)
    columns = width // block + 1
    cells = [clamp(middle - spread // 2 + noise.below(spread + 1)) for _ in range(columns * (height // block + 1))]
    return i420(width, height, lambda x, y: cells[y // block * columns + x // block])


def streams():
    """Yields name, width, height, block_param, static_param and the frames; None for static_param: not asked."""
    for level in range(256):
        yield f"uniform_{level}", 16, 16, 20, None, [i420(16, 16, lambda x, y, v=level: v)]

    # Histograms of every width and place, so that both exposure limits are crossed.
    noise = Noise(1)
    for i in range(160):
        low = noise.below(250)
        span = 1 + noise.below(256 - low)
        width, height = 17 + noise.below(24), 16 + noise.below(9)
        if i % 3 == 0:  # two heaps instead of one plateau
            luma = lambda x, y, a=low, s=span: a + (s - 1) * (noise.below(5) == 0)
        else:
            luma = lambda x, y, a=low, s=span: a + noise.below(s)
        yield f"levels_{i}", width, height, 20, None, [i420(width, height, luma)]

    # Shares of zero or dark samples around 95 in 100. 20 x 20 pixels have 100 luma and 50 chroma samples.
    for dark in (93, 94, 95, 96):
        for level in (0, 29, 30):
            luma = lambda x, y, n=dark, v=level: v if (y * 20 + x) // 2 < n else 90
            yield f"dark_{dark}_of_{level}", 20, 20, 20, None, [i420(20, 20, luma)]
        for zeros in (46, 47, 48, 50):
            luma = lambda x, y, n=dark: 0 if (y * 20 + x) // 2 < n else 90
            chroma = lambda k, n=zeros: 0 if k // 4 < n else 128
            yield f"green_{dark}_{zeros}", 20, 20, 20, None, [i420(20, 20, luma, chroma)]
    for width, height in ((2, 2), (3, 3), (6, 2), (6, 6), (7, 6), (1, 9), (9, 1)):  # odd numbers of samples among them
        yield f"green_{width}x{height}", width, height, 20, None, [i420(width, height, lambda x, y: 0, lambda k: 0)]
    yield "dark_lower_half", 32, 32, 20, None, [i420(32, 32, lambda x, y: 200 if y < 16 else 16)]
    yield "dark_upper_half", 32, 32, 20, None, [i420(32, 32, lambda x, y: 16 if y < 16 else 200)]

    # Mosaics: what the block detector is for. Parameters below, at and above its fixed limit.
    for seed, (block, spread) in enumerate((b, s) for b in (4, 5, 6, 7, 8, 10, 12, 16, 20) for s in (40, 200)):
        frames = [mosaic(176, 144, block, seed, spread)]
        for param in (1, 3, 20, 60):
            yield f"mosaic_{block}_{spread}_{param}", 176, 144, param, None, frames
    for width, height in ((161, 97), (150, 101), (31, 33), (18, 18), (16, 16), (17, 200), (200, 17), (15, 64)):
        yield f"mosaic_{width}x{height}", width, height, 4, None, [mosaic(width, height, 6, width, 220)]
    for i, amplitude in enumerate((4, 30, 255)):
        grain = Noise(77 + i)
        luma = lambda x, y, a=amplitude: clamp(128 - a / 2 + grain.below(a + 1))
        yield f"grain_{amplitude}", 160, 120, 20, None, [i420(160, 120, luma)]
    rings = lambda x, y: clamp(128 + 90 * math.sin(((x - 80) ** 2 + (y - 60) ** 2) / 150))
    yield "rings", 160, 120, 20, None, [i420(160, 120, rings)]
    yield "ramp", 160, 120, 20, None, [i420(160, 120, lambda x, y: clamp((x + y) * 0.9))]
    for pitch in (9, 11, 14):  # thin bright frames on a dark ground: corners of all four kinds in every row
        grid = lambda x, y, p=pitch: 220 if x % p < 2 or y % p < 2 else 30
        yield f"grid_{pitch}", 160, 120, 20, None, [i420(160, 120, grid)]

    # Runs of like frames. Sizes whose compared area is not a quarter change what a step of 3 or 4 means.
    for width, height in ((16, 16), (18, 18), (33, 21), (7, 5)):
        for limit in (1, 3, 10):
            levels = [0] * 3 + [2, 4, 6, 9, 12, 12, 12] + [100] * 12 + [104, 107, 109] + [109] * 21
            yield (f"still_{width}x{height}_{limit}", width, height, 20, limit,
                   [i420(width, height, lambda x, y, v=v: v) for v in levels])


def main(directory):
    directory.mkdir(parents=True, exist_ok=True)
    with open(directory / "verdicts.txt", "w") as text, open(directory / "frames.i420", "wb") as pixels:
        for name, width, height, block_param, static_param, frames in streams():
            # A stream that is not about stillness has one frame and a limit which that cannot reach.
            still = StillCounter(static_param or 1000)
            text.write(f"stream {name} {width} {height} {block_param} {still.limit}\n")
            for data in frames:
                screen, exposed = screen_and_exposure(data, width, height)
                blocky = is_blocky(data, width, height, block_param)
                text.write(f"{screen} {exposed} {blocky} {still.is_static(data[0], width, height)}\n")
                pixels.write(data)


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]))
