"""Sends transport streams over UDP at their own pace, and knows when it sent what."""
import socket
import subprocess
import time

PACKET = 188
VIDEO_PID = 0x100
PER_DATAGRAM = 7


def clip(path, video, audio, seconds, offset_s=0.0):
    """A transport stream whose timestamps begin at `offset_s`."""
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i", video, "-f", "lavfi", "-i", audio,
                    "-t", str(seconds), "-c:v", "mpeg2video", "-q:v", "2", "-g", "12", "-c:a", "mp2", "-muxdelay", "0.1",
                    "-output_ts_offset", str(offset_s), "-f", "mpegts", path], check=True)
    return path.read_bytes()


def pcr_of(packet):
    """The clock reference in seconds; None if there is none."""
    if packet[3] & 0x20 and packet[4] > 0 and packet[5] & 0x10:
        return (int.from_bytes(packet[6:10], "big") << 1 | packet[10] >> 7) / 90000
    return None


class LiveSender:
    def __init__(self, port):
        self.target = ("127.0.0.1", port)
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.counters = {}
        self.due = None
        self.late_s = 0.0  # how far it has fallen behind at most, on a machine that is busy

    def close(self):
        self.socket.close()

    def play(self, stream, lost=None):
        """Sends a clip as if it went on from the one before, but for its timestamps; from one time until another,
        in seconds, every tenth packet of the video is `lost`. Returns the wall clock at its beginning."""
        packets = [stream[at:at + PACKET] for at in range(0, len(stream), PACKET)]
        first = next(pcr for pcr in map(pcr_of, packets) if pcr is not None)
        begin = self.due = self.due or time.time()
        waiting = []
        for number, packet in enumerate(packets):
            pid = int.from_bytes(packet[1:3], "big") & 0x1FFF
            pcr = pcr_of(packet)
            if pcr is not None:
                self.flush(waiting)
                self.due = begin + pcr - first
                time.sleep(max(self.due - time.time(), 0.0))
                self.late_s = max(self.late_s, time.time() - self.due)
            if packet[3] & 0x10:  # the counter of packets with a payload goes on
                self.counters[pid] = self.counters.get(pid, -1) + 1 & 15
            is_lost = pid == VIDEO_PID and lost and lost[0] <= self.due - begin < lost[1] and number % 10 == 0
            if not is_lost:
                waiting.append(packet[:3] + bytes([packet[3] & 0xF0 | self.counters.get(pid, 0)]) + packet[4:])
        self.flush(waiting)
        return begin

    def flush(self, waiting):
        for at in range(0, len(waiting), PER_DATAGRAM):
            self.socket.sendto(b"".join(waiting[at:at + PER_DATAGRAM]), self.target)
        waiting.clear()
