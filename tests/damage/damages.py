"""What can happen to a file: each damage changes the bytes of an intact one, as its random numbers have it."""


def cut(source, random):
    """The end is missing: anything from a few bytes to almost all."""
    size = len(source.data)
    kept = random.choice([random.uniform(0.05, 1.0), random.uniform(0.9, 1.0), random.uniform(0.99, 1.0)])
    return source.data[:min(int(size * kept), size - 1)]


def flip(source, random):
    """Single bits, here and there."""
    data = bytearray(source.data)
    for _ in range(random.choice([1, 3, 10, 30, 100])):
        data[random.randrange(len(data))] ^= 1 << random.randrange(8)
    return bytes(data)


def flip_header(source, random):
    """Single bytes where the file says what it holds: before the first packet, or after the last."""
    first = min((at for at, _ in source.packets), default=256)
    last = max((at + size for at, size in source.packets), default=len(source.data))
    places = [*range(min(max(first, 16), 4096)), *range(min(last, len(source.data)), len(source.data))]
    data = bytearray(source.data)
    for _ in range(random.choice([1, 1, 1, 2, 4])):
        data[random.choice(places)] ^= random.choice([1 << random.randrange(8), random.randrange(1, 256)])
    return bytes(data)


def zero(source, random):
    """A stretch that was never written."""
    at, end = _stretch(source, random)
    return source.data[:at] + bytes(end - at) + source.data[end:]


def noise(source, random):
    """A stretch that belongs to another file."""
    at, end = _stretch(source, random)
    return source.data[:at] + random.randbytes(end - at) + source.data[end:]


def drop(source, random):
    """Some stretches are gone, and what follows has moved up."""
    data = source.data
    for _ in range(random.choice([1, 1, 3])):
        at, end = _range(len(data), random, 0.15)
        data = data[:at] + data[end:]
    return data


def drop_packets(source, random):
    """The content of some packets is gone, with nothing left in its place."""
    gone = _some_packets(source, random)
    data = bytearray(source.data)
    for at, size in sorted(gone, reverse=True):
        del data[at:at + size]
    return bytes(data)


def zero_packets(source, random):
    """The content of some packets was never written."""
    data = bytearray(source.data)
    for at, size in _some_packets(source, random):
        data[at:at + size] = bytes(len(data[at:at + size]))
    return bytes(data)


def swap(source, random):
    """Two stretches have changed places."""
    data = source.data
    length = max(1, int(len(data) * random.choice([0.002, 0.02, 0.1])))
    first, second = sorted(random.randrange(max(1, len(data) - length)) for _ in range(2))
    length = min(length, second - first, len(data) - second)
    return (data[:first] + data[second:second + length] + data[first + length:second] +
            data[first:first + length] + data[second + length:])


def reorder(source, random):
    """Pieces of a fixed size arrive in another order, as packets of a network."""
    data = source.data
    piece = random.choice([188, 1316, 4096])
    pieces = [data[at:at + piece] for at in range(0, len(data), piece)]
    begin = random.randrange(len(pieces))
    end = min(len(pieces), begin + random.choice([4, 16, 64]))
    moved = pieces[begin:end]
    random.shuffle(moved)
    return b"".join(pieces[:begin] + moved + pieces[end:])


def lose_pieces(source, random):
    """Pieces of a fixed size are lost all over the file, as packets of a network."""
    data = source.data
    piece = random.choice([188, 1316, 4096])
    share = random.choice([0.01, 0.05, 0.2])
    return b"".join(data[at:at + piece] for at in range(0, len(data), piece) if random.random() >= share)


def _range(size, random, most):
    length = max(1, int(size * most * random.random() ** 2))
    at = random.randrange(max(1, size - size // 20 - length))  # what is missing at the end is cut off
    return at, at + length


def _stretch(source, random):
    return _range(len(source.data), random, 0.4)


def _some_packets(source, random):
    """One in twenty to one in three, together or all over the file."""
    packets = source.packets[:-max(1, len(source.packets) // 20)]
    count = max(1, int(len(packets) * random.choice([0.05, 0.1, 0.3])))
    if random.random() < 0.5:
        begin = random.randrange(len(packets))
        return packets[begin:begin + count]
    return random.sample(packets, count)


KINDS = {function.__name__.replace("_", "-"): function
         for function in (cut, flip, flip_header, zero, noise, drop, drop_packets, zero_packets, swap, reorder, lose_pieces)}
