"""Music and sound effects by synthesis: stereo arrays of float, 44.1 kHz."""

import subprocess

import numpy as np

RATE = 44100
NAMES = {"C": 0, "D": 2, "E": 4, "F": 5, "G": 7, "A": 9, "B": 11}


def pitch(name):
    """Hertz of a note such as "A4" or "Bb3"."""
    letter, rest = name[0], name[1:]
    shift = rest.count("#") - rest.count("b")
    number = NAMES[letter] + shift + 12 * (int(rest.strip("#b")) + 1)
    return 440.0 * 2 ** ((number - 69) / 12)


def clock(seconds):
    return np.arange(int(seconds * RATE)) / RATE


def decay(t, attack, length):
    return np.minimum(t / attack, 1) * np.exp(-t / length)


def swell(t, attack, release):
    end = t[-1]
    return np.clip(t / attack, 0, 1) * np.clip((end - t) / release, 0, 1)


def pluck(hz, seconds=1.2, bright=0.5):
    """A soft mallet: two sines and a short breath."""
    t = clock(seconds)
    tone = np.sin(2 * np.pi * hz * t) + bright * 0.5 * np.sin(2 * np.pi * hz * 3.98 * t) * np.exp(-t * 14)
    tone += bright * 0.25 * np.sin(2 * np.pi * hz * 2 * t) * np.exp(-t * 6)
    return tone * decay(t, 0.003, seconds / 4)


def string(hz, seconds=1.4, damping=0.996, seed=1):
    """A plucked string: noise that circles in a delay line and loses its edge."""
    period = int(RATE / hz)
    line = np.random.default_rng(seed + period).uniform(-1, 1, period)
    line = (line + np.roll(line, 1)) / 2
    rounds = int(seconds * RATE / period) + 1
    out = np.empty(rounds * period)
    for i in range(rounds):
        out[i * period:(i + 1) * period] = line
        line = damping * (line + np.roll(line, 1)) / 2
    t = clock(seconds)
    return out[:len(t)] * swell(t, 0.002, 0.2)


def bell(hz, seconds=2.0):
    t = clock(seconds)
    partials = ((1, 1, 1.0), (2.76, 0.45, 0.6), (5.4, 0.22, 0.35), (8.93, 0.1, 0.2))
    tone = sum(level * np.sin(2 * np.pi * hz * ratio * t) * np.exp(-t / (seconds * 0.35 * length))
               for ratio, level, length in partials)
    return tone * np.minimum(t / 0.002, 1)


def pad(hz, seconds, bright=4):
    """A wide, slow chord tone: detuned voices with few harmonics."""
    t = clock(seconds)
    tone = 0
    for detune in (-0.0035, 0.0, 0.0032):
        for k in range(1, bright + 1):
            tone = tone + np.sin(2 * np.pi * hz * (1 + detune) * k * t + k) / k ** 1.8
    return tone / 3 * swell(t, min(0.35, seconds / 3), min(0.5, seconds / 3))


def bass(hz, seconds=0.6):
    t = clock(seconds)
    tone = np.sin(2 * np.pi * hz * t) + 0.35 * np.sin(4 * np.pi * hz * t) + 0.12 * np.sin(6 * np.pi * hz * t)
    return np.tanh(1.3 * tone) * decay(t, 0.006, seconds * 0.6) * swell(t, 0.004, 0.08)


def lead(hz, seconds, vibrato=5.0):
    t = clock(seconds)
    phase = 2 * np.pi * hz * t + 0.35 * np.sin(2 * np.pi * vibrato * t) * np.clip(t - 0.15, 0, 1)
    tone = np.sin(phase) + 0.3 * np.sin(2 * phase) + 0.12 * np.sin(3 * phase)
    return tone * swell(t, 0.03, min(0.15, seconds / 3))


def kick(seconds=0.35):
    t = clock(seconds)
    return np.sin(2 * np.pi * (48 * t + 14 * (1 - np.exp(-t * 28)) / 4)) * decay(t, 0.002, 0.11)


def noise_hit(seconds, length, low, high, seed=3):
    t = clock(seconds)
    return band(np.random.default_rng(seed).normal(0, 1, len(t)), low, high) * decay(t, 0.002, length)


def shaker(seed=3):
    return noise_hit(0.12, 0.035, 5000, 12000, seed)


def clap(seed=5):
    hit = noise_hit(0.3, 0.08, 900, 5200, seed)
    for shift in (0.011, 0.021):
        offset = int(shift * RATE)
        hit[offset:] += 0.7 * noise_hit(0.3, 0.06, 900, 5200, seed + 1)[:len(hit) - offset]
    return hit


def band(signal, low, high):
    """Keeps the frequencies between, with soft edges."""
    spectrum = np.fft.rfft(signal)
    hz = np.fft.rfftfreq(len(signal), 1 / RATE) + 1e-9
    return np.fft.irfft(spectrum / (1 + (low / hz) ** 4) / (1 + (hz / high) ** 4), len(signal))


def whoosh(seconds=0.7, low=300, high=4500, seed=11):
    t = clock(seconds)
    noise = np.random.default_rng(seed).normal(0, 1, len(t))
    shape = np.sin(np.pi * t / seconds) ** 2
    dark, light = band(noise, 80, low * 2), band(noise, low, high)
    return (dark * (1 - shape) + light * shape) * shape


def pop(hz=520, seconds=0.18):
    t = clock(seconds)
    return np.sin(2 * np.pi * hz * (t + 0.35 * t ** 2 / seconds)) * decay(t, 0.002, 0.045)


def chime(notes, gap=0.07, seconds=2.2):
    out = Mix(seconds + gap * len(notes))
    for i, name in enumerate(notes):
        out.add(bell(pitch(name), seconds), i * gap, 0.5, -0.4 + 0.8 * i / max(1, len(notes) - 1))
    return out


class Mix:
    """A stereo time line. What reaches past its end comes in again at the start when it is a loop."""

    def __init__(self, seconds, loop=False):
        self.data = np.zeros((int(round(seconds * RATE)), 2))
        self.loop = loop

    def add(self, signal, at, level=1.0, pan=0.0):
        """`pan` goes from -1 (left) to 1 (right)."""
        angle = (pan + 1) * np.pi / 4
        stereo = signal[:, None] * np.array([np.cos(angle), np.sin(angle)]) * level * 1.2
        start = int(round(at * RATE))
        head = stereo[:max(0, len(self.data) - start)]
        self.data[start:start + len(head)] += head
        if self.loop:
            tail = stereo[len(head):][:len(self.data)]
            self.data[:len(tail)] += tail
        return self

    def room(self, seconds=1.6, level=0.22, seed=21):
        """Reverberation: the sound against two seconds of fading noise."""
        t = clock(seconds)
        rng = np.random.default_rng(seed)
        wet = np.zeros_like(self.data)
        for channel in (0, 1):
            tail = band(rng.normal(0, 1, len(t)) * np.exp(-t / (seconds / 5)), 180, 6500)
            tail /= np.sqrt(np.sum(tail ** 2))
            wet[:, channel] = self._convolved(self.data[:, channel], tail)
        self.data += level * wet
        return self

    def _convolved(self, signal, tail):
        size = len(signal) if self.loop else len(signal) + len(tail)
        if size < len(tail):
            tail = tail[:size]
        return np.fft.irfft(np.fft.rfft(signal, size) * np.fft.rfft(tail, size), size)[:len(signal)]

    def duck(self, times, depth=0.35, length=0.25):
        """Makes room for the beats."""
        gain = np.ones(len(self.data))
        t = clock(length)
        dip = 1 - depth * np.exp(-t / (length / 3))
        for at in times:
            start = int(at * RATE)
            gain[start:start + len(dip)] *= dip[:max(0, len(gain) - start)]
        self.data *= gain[:, None]
        return self

    def mastered(self, target=-14.0, ceiling=0.8):
        """At this loudness, in LUFS; peaks are rounded off below `ceiling`, which leaves the lossy encoder room."""
        gain, out = 1.0, self.data
        for _ in range(4):
            gain *= 10 ** ((target - loudness(out)) / 20)
            out = ceiling * np.tanh(self.data * gain / ceiling)
        # AAC encoders overshoot a file that begins at full strength.
        return out * np.minimum(np.arange(len(out)) / (0.03 * RATE), 1)[:, None]

    def save(self, path, target=-14.0, bitrate="128k"):
        save(path, self.mastered(target), bitrate)


def loudness(stereo):
    """LUFS, without the gate: low sounds weigh less, bright ones more."""
    hz = np.fft.rfftfreq(len(stereo), 1 / RATE) + 1e-9
    weight = 1 / (1 + (60 / hz) ** 4) * (1 + 1.5 / (1 + (1500 / hz) ** 4))
    power = np.sum(np.abs(np.fft.rfft(stereo, axis=0)) ** 2 * weight[:, None]) * 2 / len(stereo) ** 2
    return -1.4 + 10 * np.log10(power + 1e-12)


def pcm(stereo):
    """16 bits a sample."""
    return np.clip(np.rint(stereo * 32767), -32768, 32767).astype("<i2").tobytes()


def save(path, stereo, bitrate="128k"):
    command = ["ffmpeg", "-v", "error", "-y", "-f", "s16le", "-ar", str(RATE), "-ac", "2", "-i", "-",
               "-c:a", "libmp3lame", "-b:a", bitrate, "-map_metadata", "-1", "-id3v2_version", "0", "-bitexact",
               str(path)]
    subprocess.run(command, input=pcm(stereo), check=True)


def save_effect(path, signal, peak=0.8):
    """A mono sound or a Mix as a short file."""
    stereo = signal.data if isinstance(signal, Mix) else np.stack([signal, signal], 1)
    fade = np.clip((len(stereo) - np.arange(len(stereo))) / (0.03 * RATE), 0, 1)[:, None]
    save(path, stereo / (np.max(np.abs(stereo)) or 1.0) * peak * fade, "96k")
