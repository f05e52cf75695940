"""What the program is asked to do while faults are put in its way, and what must be there afterwards."""

import hashlib
import os
import plistlib
import random
import shutil
import sqlite3
import struct
import tempfile
import wave
import zlib
from pathlib import Path

DATABASE = "home/qvMultiSceneRender/data/sceneDataBase.db"
SCENES = "home/qvMultiSceneRender/scene/"
OFFERED = "out/severConfig/info1-1.plist"


def write_png(file, rgb=None, size=16, rows=None):
    def chunk(name, data):
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    rows = b"".join(rows) if rows else (b"\0" + bytes(rgb) * size) * size
    file.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 2, 0, 0, 0))
                     + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def write_noise(file, seed, size):
    write_png(file, rows=[b"\0" + random.Random(f"{seed} {row}").randbytes(3 * size) for row in range(size)], size=size)


def write_sound(file):
    with wave.open(str(file), "wb") as sound:
        sound.setparams((1, 2, 8000, 0, "NONE", ""))
        sound.writeframes(b"".join(struct.pack("<h", (at % 40) * 200) for at in range(4000)))


def quad(texture):
    return {"type": "QVQuadObject3D", "FpsInfo": {"startFps": 0, "endFps": 1000}, "TextureInfo": texture,
            "QuadInfo": {"modelWidth": 16, "modelHeight": 16}}


def photo_and_text():
    """The inputs of a template, and the nodes that show them."""
    return ([{"userInputType": 0, "renderMapKey": "title", "maxLenght": 5, "maxLine": 1},
             {"userInputType": 1, "renderMapKey": "photo", "aspectWidth": 1, "aspectHeight": 1}],
            [quad({"textureType": "image", "texture": "photo"}),
             quad({"textureType": "text2d", "textString": "title", "fontSize": 8, "textColor": "1,1,1,1",
                   "textFixedResolution": "16,16"})])


def film():
    return ([{"userInputType": 3, "renderMapKey": "clip"}],
            [quad({"textureType": "mp4Video", "texture": "clip", "videoFps": 10})])


def write_template(parent, rgb, name="small", number=7, content=photo_and_text):
    """A template of 16 x 16 pixels and three frames: a picture of that colour, and what a user gives."""
    folder = parent / name
    folder.mkdir(parents=True)
    root = f"$(multiSceneSceneROOT)/{name}/"
    inputs, nodes = content()
    record = {"sId": number, "eName": name, "scenePlistPath": root + "scene.plist", "sceneResourceFolderPath": root,
              "fpsLength": 3, "sourceType": 1,
              "wechartTempletInfo": {"mediaSize": "16,16", "videoFrameRate": 10, "userInputArray": inputs}}
    scene = {"Camera": {"type": "QVOrthCamera", "OrthWidth": 16},
             "TimeSource": {"type": "QVNullVideoTimeSource", "NullVideoInfo": {"videoFps": 10, "fpsTotal": 2},
                            "FpsInfo": {"startFps": 0, "endFps": 2}},
             "object3D": [quad({"textureType": "image", "texture": "$(currentScenePlistROOT)/plain.png"}), *nodes]}
    (folder / f"{name}.plist").write_bytes(plistlib.dumps({"installScenes": [record]}))
    (folder / "scene.plist").write_bytes(plistlib.dumps(scene))
    write_png(folder / "plain.png", rgb)
    return folder


def catalogue_rows(database):
    """What the next program finds in the catalogue, read from a copy."""
    if not database.exists():
        return []
    with tempfile.TemporaryDirectory() as folder:
        for ending in ("", "-wal"):
            if Path(f"{database}{ending}").exists():
                shutil.copy(f"{database}{ending}", f"{folder}/copy.db{ending}")
        connection = sqlite3.connect(f"{folder}/copy.db")
        try:
            rows = [("integrity", *connection.execute("PRAGMA integrity_check").fetchone())]
            tables = {name for name, in connection.execute("SELECT name FROM sqlite_master WHERE type='table'")}
            for table, columns in (("signSceneTable", "sId, scenePlistPath, sceneName, wechartTempletInfo"),
                                   ("installJournal", "*"), ("installedArchives", "*")):
                if table in tables:
                    rows += [(table, *row) for row in connection.execute(f"SELECT {columns} FROM {table} ORDER BY 1")]
            return rows
        finally:
            connection.close()


def snapshot(root):
    """Every file and folder below `root` by its content; the catalogue by its rows."""
    found = {}
    for folder, folders, files in os.walk(root):
        relative = os.path.relpath(folder, root)
        prefix = "" if relative == "." else relative + "/"
        for name in folders:
            found[prefix + name + "/"] = "folder"
        for name in files:
            path = prefix + name
            if path.startswith(DATABASE):
                continue
            found[path] = hashlib.sha256((Path(folder) / name).read_bytes()).hexdigest()
    if (root / OFFERED).exists():
        found["offered"] = plistlib.loads((root / OFFERED).read_bytes())["severTempletData"]
    rows = catalogue_rows(root / DATABASE)
    # An open change is none of the user's business, but must be closed by the next run.
    found.update({f"journal of {row[1]}": "open" for row in rows if row[0] == "installJournal"})
    rows = [row for row in rows if row[0] != "installJournal"]
    if len(rows) > 1:
        found["rows"] = repr(rows)
    return found


class World:
    """One command. `prepare` makes what is there before, `words` are the command's, `valued` says which of the files
    the user cares for: they must be as before or as after, whatever happens."""

    name = ""
    valued = ()
    #: Whether what a killed program leaves must be whole at once; else when the program has been started again.
    instantly = True

    def prepare(self, root, run):
        raise NotImplementedError

    def words(self, root):
        raise NotImplementedError

    def restart(self, root):
        """What starts the program again, and no more."""
        return ["templates", "list"]

    def again(self, root):
        """What the user does next when it is done: with it goes what a killed job has left."""
        return self.words(root)

    def outcome(self, found):
        return {path: content for path, content in found.items() if path == "rows" or self.is_valued(path)}

    def is_valued(self, path):
        is_hidden = "/." in path
        return not is_hidden and any(path.startswith(each) and path != each for each in self.valued)

    def may_be_unsettled(self, errors):
        """Whether a run that a disk's lasting fault has ended may leave what is put right later."""
        return False

    def state(self, found, before, after, unsettled):
        """"old", "new", or what is wrong. `unsettled`: nothing could be put right yet."""
        now = self.outcome(found)
        if now == self.outcome(after):
            return "new"
        if now == self.outcome(before):
            return "old"
        differing = {path for path, _ in now.items() ^ self.outcome(before).items()}
        return "neither old nor new in " + ", ".join(sorted(differing))


class Catalogue(World):
    valued = (SCENES,)
    instantly = False

    def prepare(self, root, run):
        for folder, rgb in (("v1", (200, 0, 0)), ("v2", (0, 0, 200))):
            write_template(root / "in" / folder, rgb)
            run("template", "pack", str(root / "in" / folder / "small"), "-o", str(root / "in" / folder / "small.zip"))
            shutil.rmtree(root / "in" / folder / "small")
        write_template(root / "in", (0, 200, 0), "other", 8)
        run("template", "pack", str(root / "in" / "other"), "-o", str(root / "in" / "other.zip"))
        shutil.rmtree(root / "in" / "other")

    def may_be_unsettled(self, errors):
        return "is settled when the program is started again" in errors


class Install(Catalogue):
    name = "install"

    def words(self, root):
        return ["templates", "install", str(root / "in/v1/small.zip")]


class Replace(Catalogue):
    name = "replace"

    def prepare(self, root, run):
        super().prepare(root, run)
        run("templates", "install", str(root / "in/other.zip"))
        run("templates", "install", str(root / "in/v1/small.zip"))

    def words(self, root):
        return ["templates", "install", str(root / "in/v2/small.zip"), "--replace"]


class Remove(Replace):
    name = "remove"

    def words(self, root):
        return ["templates", "remove", "small"]

    def again(self, root):
        return ["templates", "install", str(root / "in/other.zip")]


class Pack(World):
    name = "pack"
    valued = ("out/",)

    def prepare(self, root, run):
        folder = write_template(root / "in", (200, 0, 0))
        run("template", "pack", str(folder), "-o", str(root / "out/small.zip"))
        write_png(folder / "plain.png", (0, 0, 200))

    def words(self, root):
        return ["template", "pack", str(root / "in/small"), "-o", str(root / "out/small.zip")]


class Publish(World):
    """What the server's list names must be there, and be what the list says of it."""

    name = "publish"
    valued = ("out/",)

    def prepare(self, root, run):
        write_template(root / "in", (0, 200, 0), "other", 8)
        folder = write_template(root / "in", (200, 0, 0))
        for each in ("other", "small"):
            run("template", "publish", str(root / "in" / each), "--to", str(root / "out"))
        write_png(folder / "plain.png", (0, 0, 200))

    def words(self, root):
        return ["template", "publish", str(root / "in/small"), "--to", str(root / "out")]

    def outcome(self, found):
        offered = {"list": found.get(OFFERED)}
        for entry in found.get("offered", []):
            for key in ("templateUrl", "thumbUrl", "videoPreviewUrl"):
                offered[entry[key]] = found.get("out/" + entry[key], "missing")
            if offered[entry["templateUrl"]] != entry["templateSha256"]:
                offered[entry["templateUrl"]] = "not what the list says"
        return offered


class Video(World):
    valued = ("out/",)

    def prepare(self, root, run):
        write_template(root / "in", (200, 0, 0))
        write_png(root / "in/photo.png", (10, 200, 30))
        write_sound(root / "in/music.wav")
        run(*(word.replace("title=new", "title=old") for word in self.words(root)))

    def inputs(self, root):
        return [str(root / "in/small"), "--text", "title=new", "--photo", f"photo={root}/in/photo.png"]


class Make(Video):
    name = "make"

    def words(self, root):
        return ["make", *self.inputs(root), "--music", str(root / "in/music.wav"), "-o", str(root / "out/video.mp4")]


class Film(Video):
    """An installed template with a film of the user's."""

    name = "film"

    def prepare(self, root, run):
        folder = write_template(root / "in", (200, 0, 0))
        for each in ("old", "new"):
            # Large enough that most of it is read while frames are drawn.
            write_noise(folder / "plain.png", each, 256)
            run("make", str(folder), "--size", "256x256", "--bitrate", "20M", "--text", "title=" + each, "-o",
                str(root / f"in/{each}.mp4"))
        shutil.rmtree(folder)
        folder = write_template(root / "in", (0, 0, 200), "shown", 8, film)
        run("template", "pack", str(folder), "-o", str(root / "in/shown.zip"))
        shutil.rmtree(folder)
        run("templates", "install", str(root / "in/shown.zip"))
        run(*(word.replace("new.mp4", "old.mp4") for word in self.words(root)))

    def words(self, root):
        return ["make", "shown", "--video", f"clip={root}/in/new.mp4", "-o", str(root / "out/video.mp4")]


class Frames(Video):
    name = "frames"

    def words(self, root):
        return ["frames", *self.inputs(root), "-o", str(root / "out/pictures")]

    def may_be_unsettled(self, errors):
        return True

    def state(self, found, before, after, unsettled):
        # A program that is killed, or that a disk no longer lets put anything right, may leave fewer pictures, but
        # never some of each job.
        now = self.outcome(found).items()
        for name, then in (("old", before), ("new", after)):
            if unsettled and now <= self.outcome(then).items():
                return name
        return super().state(found, before, after, unsettled)


WORLDS = [Install(), Replace(), Remove(), Pack(), Publish(), Make(), Film(), Frames()]
