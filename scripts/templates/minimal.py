"""minimal: the smallest useful template, with every key explained, for authors to copy."""

from kit import paint, plist, scene
from kit.package import Template, photo_input, text_input
from kit.plist import Note

WIDTH, HEIGHT, FRAMES = 720, 1280, 90
LAST = FRAMES - 1


def build(root):
    template = Template(root, "minimal", 1000, ("Minimal", "极简", "ミニマル"))
    template.inputs = [text_input("text", 24, 2, ("A line of text", "一行文字", "テキスト")),
                       photo_input("photo", 1, 1, ("A photo", "照片", "写真"))]
    paint.save_png(background(), template.file("res/background.png"))
    template.scene("scene.plist", FRAMES, scene_file())
    paint.save_jpeg(still_life(), template.file("sample/photo.jpg"))
    template.samples({"text": "Less is more", "photo": "photo.jpg"})
    template.write()
    explain_records(template)


def background():
    surface, pen = paint.canvas(64, 128)
    pen.rectangle(0, 0, 64, 128)
    paint.fill(pen, paint.linear((0, 0), (0, 128), ((0, "#f7f4ef"), (1, "#e4ddd2"))))
    return surface


def scene_file():
    return {
        Note("The camera. With this one a unit is a pixel: x runs from -360 to 360, y from -640 (bottom) to 640."): 0,
        "Camera": {
            Note("QVOrthCamera: no perspective. QVFrustumCamera has perspective and takes \"FrustumFov\" (degrees)."): 0,
            "type": "QVOrthCamera",
            Note("How many units the picture is wide."): 0,
            "OrthWidth": WIDTH,
            Note("Width / height of the picture; the height follows from it."): 0,
            "aspect": WIDTH / HEIGHT,
        },
        Note("The clock of the scene. Without one a scene never ends. A video can be the clock, too:\n"
             "QVSingleVideoTimeSource with \"VideoInfo\" (\"msaterVideoPath\", \"videoFps\")."): 0,
        "TimeSource": {
            "type": "QVNullVideoTimeSource",
            "NullVideoInfo": {
                Note("Frames a second, and the number of the last frame."): 0,
                "videoFps": 30,
                "fpsTotal": LAST,
            },
            Note("First and last frame, both counted: 0 to 89 are 90 frames, the \"fpsLength\" of the record."): 0,
            "FpsInfo": {"startFps": 0, "endFps": LAST},
        },
        Note("The nodes. A larger \"RenderDepth\" is drawn first, so it lies further back."): 0,
        "object3D": [background_node(), photo_node(), text_node()],
    }


def background_node():
    return {
        Note("A picture that fills the frame."): 0,
        "type": "QVQuadObject3D",
        Note("Any word you like: it names the node in messages."): 0,
        "name": "background",
        Note("The frames in which the node exists; the texture is loaded at the first."): 0,
        "FpsInfo": {"startFps": 0, "endFps": LAST, "RenderDepth": 100},
        "TextureInfo": {
            "textureType": "image",
            Note("$(currentScenePlistROOT)/ stands for the folder of this template."): 0,
            "texture": scene.ROOT + "res/background.png",
        },
        Note("The box of the quad, in units of the camera, around the node's own origin."): 0,
        "QuadInfo": {"modelWidth": WIDTH, "modelHeight": HEIGHT},
    }


def photo_node():
    return {
        Note("The user's photo. It is there from the first frame, the one many players stand on, and rises into its place."): 0,
        "type": "QVQuadObject3D",
        "name": "photo",
        "FpsInfo": {"startFps": 0, "endFps": LAST, "RenderDepth": 50},
        "TextureInfo": {
            "textureType": "image",
            Note("The \"renderMapKey\" of an input in minimal.plist. Nothing is drawn until the user gives a photo."): 0,
            "texture": "photo",
        },
        "QuadInfo": {
            "modelWidth": 560,
            "modelHeight": 560,
            Note("0 stretches to the box, 1 fits inside it, 2 fills it and overhangs."): 0,
            "quadObject3DContentMode": 1,
        },
        Note("Places and moves, one after another; vectors are \"x,y,z\", rotations degrees.\n"
             "Without a first item the node would lie at 0,0,0 with scale 1."): 0,
        "TransformArray": [
            {
                Note("Mind the spelling: \"sartFps\" here, \"startFps\" in \"FpsInfo\"."): 0,
                "sartFps": 0,
                "endFps": 36,
                "startTranslate": "0,40,0",
                "endTranslate": "0,120,0",
                Note("The ease: 0 linear, 5 cubic out, 15 sine in and out, 26 overshooting ..."): 0,
                "translateEase": scene.CUBIC_OUT,
            },
            {
                Note("An item stops just short of its end value, so a still one follows that states it.\n"
                     "It starts one frame after the other ends; on the same frame it would be passed over."): 0,
                "sartFps": 37,
                "endFps": 38,
                "startTranslate": "0,120,0",
            },
        ],
    }


def text_node():
    return {
        Note("The user's text, below the photo. This type has an opacity that changes."): 0,
        "type": "QVQuadDiaphaneityObject3D",
        "name": "text",
        "FpsInfo": {"startFps": 20, "endFps": LAST, "RenderDepth": 40},
        "TextureInfo": {
            "textureType": "text2d",
            Note("The \"renderMapKey\" of an input."): 0,
            "textString": "text",
            Note("A family that is installed."): 0,
            "fontName": "Noto Sans",
            Note("In pixels of the texture."): 0,
            "fontSize": 60.0,
            Note("Red, green, blue, alpha, each 0 to 1."): 0,
            "textColor": "0.16,0.16,0.18,1",
            Note("0 left, 1 middle, 2 right."): 0,
            "textAlignment": 1,
            Note("Width and height of the texture in pixels."): 0,
            "textFixedResolution": "640,200",
        },
        "QuadInfo": {"modelWidth": 640, "modelHeight": 200, "quadObject3DContentMode": 1},
        Note("A still placement: one item with start values."): 0,
        "TransformArray": [{"sartFps": 20, "endFps": 21, "startTranslate": "0,-310,0"}],
        Note("Opacity over time. Before the first item it is 1, after the last one it stays."): 0,
        "AnimationInfo": [
            {"sartFps": 20, "endFps": 40, "ease": scene.SINE_OUT, "startRenderAlpha": 0.0, "endRenderAlpha": 1.0},
        ],
    }


def explain_records(template):
    """Writes the records once more, with comments."""
    record = template.records[0]
    info = record["wechartTempletInfo"]
    inputs = [{Note("0 is a text, 1 a photo."): 0, "userInputType": entry["userInputType"],
               Note("The name under which the scene file asks for it, and the name of the user's value."): 0,
               "renderMapKey": entry["renderMapKey"],
               Note("Limits of a text; the shape that a photo is cropped to."): 0,
               **{key: entry[key] for key in entry if key not in ("userInputType", "renderMapKey")}}
              for entry in info["userInputArray"]]
    described = {
        Note("A number of your own for every scene: no other installed template may use it."): 0, "sId": record["sId"],
        Note("The name in three languages."): 0,
        **{key: record[key] for key in ("eName", "cName", "jName")},
        Note("Where this lies once it is installed: $(multiSceneSceneROOT)/ and the name of the folder."): 0,
        **{key: record[key] for key in ("scenePlistPath", "sceneResourceFolderPath", "sceneThumbnailPath")},
        Note("The length in frames: \"endFps\" of the clock + 1."): 0, "fpsLength": record["fpsLength"],
        Note("Catalogue group, number of photos asked for, and where previews are (none here)."): 0,
        **{key: record[key] for key in ("sourceType", "photoTotal", "videoPreviewUrl", "youtubePreviewUrl")},
        "wechartTempletInfo": {
            "PIPTempletType": info["PIPTempletType"],
            Note("Size of the video in pixels (even numbers) and its frames a second."): 0,
            "mediaSize": info["mediaSize"], "videoFrameRate": info["videoFrameRate"],
            Note("What the user is asked for. An input that is not given leaves its place empty."): 0,
            "userInputArray": inputs,
        },
    }
    plist.write(template.folder / "minimal.plist", {
        Note("The first record is the template itself; further scenes that it uses follow."): 0,
        "installScenes": [described]})


def still_life():
    """The sample photo: a vase, some shade, much air."""
    surface, pen = paint.canvas(800, 800)
    pen.rectangle(0, 0, 800, 800)
    paint.fill(pen, paint.linear((0, 0), (800, 800), ((0, "#dfe5e2"), (1, "#b9c7c3"))))
    pen.rectangle(0, 590, 800, 210)
    paint.fill(pen, paint.linear((0, 590), (0, 800), ((0, "#cdb9a0"), (1, "#b79f83"))))
    paint.ellipse(pen, 470, 640, 210, 26)
    paint.fill(pen, paint.colour("#5c4c3c", 0.35))
    for turn, length, tint in ((-0.62, 270, "#587a5c"), (-0.2, 330, "#6f946c"), (0.22, 300, "#587a5c"), (0.66, 240, "#7fa57a")):
        twig(pen, turn, length, tint)
    paint.smooth(pen, ((352, 372), (362, 420), (296, 500), (312, 612), (400, 642), (488, 612), (504, 500), (438, 420),
                       (448, 372), (400, 362)), closed=True)
    paint.fill(pen, paint.linear((300, 0), (510, 0), ((0, "#f6efe6"), (0.45, "#e9ddcd"), (1, "#b9a78f"))))
    paint.ellipse(pen, 400, 370, 48, 11)
    paint.fill(pen, "#8d7d69")
    return surface


def twig(pen, turn, length, tint):
    pen.save()
    pen.translate(400, 372)
    pen.rotate(turn)
    pen.move_to(0, 0)
    pen.curve_to(10, -length * 0.4, -14, -length * 0.7, 0, -length)
    paint.stroke(pen, tint, 5)
    for i in range(1, 8):
        for side in (-1, 1):
            paint.ellipse(pen, side * 24, -length * i / 7.5, 26, 9, side * -0.7)
            paint.fill(pen, paint.mix(tint, "#ffffff", 0.02 * i * (side + 1)))
    pen.restore()
