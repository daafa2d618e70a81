"""Writes album data anew in layouts that the sample writer does not make, the same ones each time."""

IMAGES = "<key>Master Image List</key>"


def entries(lines):
    """The fields of one image, a list of lines each: those of its key and of its value."""
    fields = []
    for line in lines:
        if line.startswith("\t\t\t<key>"):
            fields.append([])
        fields[-1].append(line)
    return fields


def reordered(number, lines):
    """The fields in another order, some of them missing, and with entities in captions."""
    missing = {1: ("ThumbPath",), 2: ("Rating", "Keywords")}.get(number % 5, ())
    fields = [field for field in entries(lines)
              if not any(f"<key>{name}</key>" in field[0] for name in missing)]
    for field in fields:
        if "<key>Caption</key>" in field[0]:
            field[1] = field[1].replace("_", " &amp; ", 1).replace("0", "&#48;", 1)
    return [line for field in reversed(fields) for line in field]


def unchanged(_, lines):
    return lines


# Name: what a tab becomes, what ends a line, what becomes of an image's fields.
LAYOUTS = {
    "spaces": ("    ", "\n", unchanged),
    "CRLF": ("\t", "\r\n", unchanged),
    "compact": ("", "", unchanged),
    "other key order, entities, missing fields": ("\t", "\n", reordered),
}


def write(source, target, layout):
    indent, end, change = LAYOUTS[layout]
    with open(source, encoding="utf-8") as lines, \
            open(target, "w", encoding="utf-8", newline="") as out:
        def put(line):
            text = line.rstrip("\n")
            bare = text.lstrip("\t")
            out.write(indent * (len(text) - len(bare)) + bare + end)

        is_image_list = False
        image = None
        number = 0
        for line in lines:
            is_image_list = is_image_list or IMAGES in line
            if is_image_list and line == "\t\t<dict>\n":
                put(line)
                image = []
            elif image is not None and line == "\t\t</dict>\n":
                for changed in change(number, image):
                    put(changed)
                number += 1
                image = None
                put(line)
            elif image is not None:
                image.append(line)
            else:
                put(line)
    return number
