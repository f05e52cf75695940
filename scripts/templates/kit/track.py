"""Corner-pin tracks: where the four corners of a surface are in every frame of a video."""

CORNERS = ("bottomleft", "bottomright", "topright", "topleft")


def xml(frames, width, height):
    """`frames` holds four (x, y) pixels a frame in the order of CORNERS, y downwards; the track counts upwards."""
    lines = ['<?xml version="1.0" encoding="UTF-8"?>', "<CornerPinInfoDoc>", "  <Object>"]
    for corners in frames:
        lines.append("    <Frame>")
        for name, (x, y) in zip(CORNERS, corners):
            lines.append(f"      <{name}x>{x / width:.6f}</{name}x><{name}y>{1 - y / height:.6f}</{name}y>")
        lines.append("    </Frame>")
    return "\n".join([*lines, "  </Object>", "</CornerPinInfoDoc>"]) + "\n"
