"""A template folder: its catalogue records, its scene files and its sample inputs."""

import json
import shutil
from pathlib import Path

from . import plist

SCENES = "$(multiSceneSceneROOT)/"


def text_input(key, length, lines, placeholders):
    return {"userInputType": 0, "renderMapKey": key, "maxLenght": length, "maxLine": lines, **_words(placeholders)}


def text3d_input(key, length, placeholders):
    return {**text_input(key, length, 1, placeholders), "is3DText": True}


def photo_input(key, width, height, placeholders):
    return {"userInputType": 1, "renderMapKey": key, "aspectWidth": width, "aspectHeight": height,
            **_words(placeholders)}


def video_input(key, width, height, placeholders):
    return {**photo_input(key, width, height, placeholders), "userInputType": 3}


def _words(placeholders):
    english, chinese, japanese = placeholders
    return {"englishPlaceholder": english, "chinesePlaceholder": chinese, "japanesePlaceholder": japanese}


class Template:
    """Collects what a template holds; `write` puts the records down last."""

    def __init__(self, root, name, first_id, names, size=(720, 1280), fps=30):
        self.folder = Path(root) / name
        self.name, self.first_id, self.names, self.size, self.fps = name, first_id, names, size, fps
        self.inputs, self.records, self.group = [], [], None
        shutil.rmtree(self.folder / "res", ignore_errors=True)

    def file(self, relative):
        path = self.folder / relative
        path.parent.mkdir(parents=True, exist_ok=True)
        return path

    def scene(self, file, frames, content, names=None):
        """Writes a scene file and returns its catalogue id."""
        plist.write(self.folder / file, content)
        scene_id = self.first_id + len(self.records)
        english, chinese, japanese = names or self.names
        self.records.append({
            "sId": scene_id, "eName": english, "cName": chinese, "jName": japanese,
            "scenePlistPath": f"{SCENES}{self.name}/{file}", "sceneResourceFolderPath": f"{SCENES}{self.name}/",
            "sceneThumbnailPath": f"{SCENES}{self.name}/thumbnail.jpg", "fpsLength": frames, "sourceType": 1,
            "photoTotal": 0, "videoPreviewUrl": "", "youtubePreviewUrl": ""})
        return scene_id

    def samples(self, values):
        """Values for a demonstration: texts, and paths relative to the folder "sample"."""
        text = json.dumps(values, ensure_ascii=False, indent=2)
        self.file("sample/inputs.json").write_text(text + "\n", encoding="utf-8")

    def write(self, kind=1):
        info = {"PIPTempletType": kind, "mediaSize": f"{self.size[0]},{self.size[1]}", "videoFrameRate": self.fps,
                "userInputArray": self.inputs}
        if self.group:
            info["sceneGroup"] = self.group
        first = self.records[0]
        first["photoTotal"] = sum(entry["userInputType"] == 1 for entry in self.inputs)
        first["wechartTempletInfo"] = info
        plist.write(self.folder / f"{self.name}.plist", {"installScenes": self.records})


def entry(scene_id, identifier):
    return {"mainSceneId": scene_id, "sceneIdentifier": identifier, identifier: identifier}


def entry_with_transition(scene_id, identifier, transition_id, frames, overlay=False):
    """An entry written with a transition carries no identifier for its scene."""
    info = {"tansitionsSceneId": transition_id, "fpsTotal": frames, "sceneTansitionsType": 1 if overlay else 0}
    return {"mainSceneId": scene_id, identifier: identifier, "sceneTansitionsInfo": info}
