"""Short pieces of music: a few bars of chords that close into a loop, played by the instruments of `sound`."""

from . import sound


class Song:
    """`chords` has one entry a bar: the bass note and the notes of the chord, "C3: E4 G4 C5". Four beats a bar."""

    def __init__(self, chords, tempo):
        self.beat = 60 / tempo
        self.bar = 4 * self.beat
        self.chords = [self._read(chord) for chord in chords]
        self.mix = sound.Mix(len(chords) * self.bar, loop=True)

    @staticmethod
    def _read(chord):
        root, notes = chord.split(":")
        return sound.pitch(root.strip()), [sound.pitch(note) for note in notes.split()]

    def _bars(self):
        return ((i * self.bar, *chord) for i, chord in enumerate(self.chords))

    def pads(self, level=0.05, bright=4):
        for start, _, notes in self._bars():
            for i, hz in enumerate(notes):
                place = -0.6 + 1.2 * i / max(1, len(notes) - 1)
                self.mix.add(sound.pad(hz, self.bar * 1.15, bright), start, level, place)
        return self

    def bass(self, steps=((0, 1.4), (2, 0.9), (3.5, 0.5)), level=0.26):
        for start, root, _ in self._bars():
            for at, length in steps:
                self.mix.add(sound.bass(root, length * self.beat), start + at * self.beat, level)
        return self

    def arpeggio(self, play=sound.pluck, division=2, level=0.11, pattern=(0, 1, 2, 1), octave=1.0):
        for start, _, notes in self._bars():
            for i in range(4 * division):
                hz = notes[pattern[i % len(pattern)] % len(notes)] * octave
                self.mix.add(play(hz), start + i * self.beat / division, level, -0.4 + 0.8 * (i % 2))
        return self

    def tune(self, notes, play=sound.bell, level=0.12, pan=0.2):
        """`notes` is "E5@0 G5@1.5 ...": a pitch and the beat on which it sounds."""
        for word in notes.split():
            name, at = word.split("@")
            self.mix.add(play(sound.pitch(name)), float(at) * self.beat, level, pan)
        return self

    def strums(self, steps=((0, True), (1.5, False), (2.5, False), (3, True)), level=0.07):
        for start, _, notes in self._bars():
            for at, down in steps:
                for i, hz in enumerate(notes if down else notes[::-1]):
                    self.mix.add(sound.string(hz, 1.0, 0.994), start + at * self.beat + 0.014 * i,
                                 level * (1 if down else 0.7), -0.3)
        return self

    def drums(self, kicks=(0, 2), claps=(1, 3), shakes=2, level=1.0):
        for bar, (start, _, _) in enumerate(self._bars()):
            for at in kicks:
                self.mix.add(sound.kick(), start + at * self.beat, 0.34 * level)
            for at in claps:
                self.mix.add(sound.clap(), start + at * self.beat, 0.07 * level, 0.15)
            for i in range(4 * shakes):
                loud = 0.05 if i % 2 else 0.028
                self.mix.add(sound.shaker(bar * 16 + i), start + i * self.beat / shakes, loud * level, -0.35)
        return self

    def save(self, path, room=1.6, wet=0.22):
        self.mix.room(room, wet).save(path)
