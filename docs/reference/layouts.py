"""Pictures and tables of the public records' layouts, read from compiled debug information.

pahole prints layouts as C text for people, which would have to be parsed again, without the gaps as rows of their own.

Usage: layouts.py OBJECT-OF-32-BITS OBJECT-OF-64-BITS TARGET-FOLDER

The objects are layouts.c, compiled with debug information. The pictures of a record are NAME-32.svg and
NAME-64.svg, and layouts.dox holds the pages that show them. layouts.json holds the same data for the
manual pages.
"""
import html
import json
import pathlib
import sys

from elftools.elf.elffile import ELFFile


def type_name(die) -> str:
    """The type as it is written in C."""
    if "DW_AT_type" not in die.attributes:
        return "void"
    kind = die.get_DIE_from_attribute("DW_AT_type")
    name = kind.attributes["DW_AT_name"].value.decode() if "DW_AT_name" in kind.attributes else ""
    match kind.tag:
        case "DW_TAG_pointer_type":
            return type_name(kind) + "*"
        case "DW_TAG_const_type":
            name = type_name(kind)
            return f"{name} const" if name.endswith("*") else f"const {name}"
        case "DW_TAG_array_type":
            counts = [child.attributes["DW_AT_upper_bound"].value + 1
                      for child in kind.iter_children()]
            return type_name(kind) + "".join(f"[{count}]" for count in counts)
        case "DW_TAG_structure_type":
            return name if not name.startswith("Error") else f"struct {name}"
        case "DW_TAG_union_type":
            return "union"
        case "DW_TAG_subroutine_type":
            return "function"
        case _:
            return name


def size_of(die) -> int:
    kind = die.get_DIE_from_attribute("DW_AT_type")
    if kind.tag == "DW_TAG_array_type":
        count = 1
        for child in kind.iter_children():
            count *= child.attributes["DW_AT_upper_bound"].value + 1
        return count * size_of(kind)
    while "DW_AT_byte_size" not in kind.attributes:
        kind = kind.get_DIE_from_attribute("DW_AT_type")
    return kind.attributes["DW_AT_byte_size"].value


def records(path: str) -> dict[str, dict]:
    """{name: {"size": bytes, "members": [(offset, size, type, name)]}} of the structures."""
    found = {}
    with open(path, "rb") as file:
        for unit in ELFFile(file).get_dwarf_info().iter_CUs():
            for die in unit.iter_DIEs():
                if die.tag != "DW_TAG_structure_type" or "DW_AT_byte_size" not in die.attributes:
                    continue
                name = die.attributes["DW_AT_name"].value.decode()
                members = [(child.attributes["DW_AT_data_member_location"].value, size_of(child),
                            type_name(child), child.attributes["DW_AT_name"].value.decode())
                           for child in die.iter_children() if child.tag == "DW_TAG_member"]
                found[name] = {"size": die.attributes["DW_AT_byte_size"].value,
                               "members": members}
    return dict(sorted(found.items()))


def with_gaps(record: dict) -> list[tuple[int, int, str, str]]:
    """The members with the padding between them."""
    rows, at = [], 0
    for member in record["members"] + [(record["size"], 0, "", "")]:
        if member[0] > at:
            rows.append((at, member[0] - at, "", ""))
        if member[1]:
            rows.append(member)
        at = member[0] + member[1]
    return rows


def picture(name: str, record: dict, bits: str) -> str:
    rows = with_gaps(record)
    unit, width = 22, 520
    height = unit * (len(rows) + 1) + 10
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
             f'viewBox="0 0 {width} {height}" font-family="DejaVu Sans Mono, monospace" '
             'font-size="12">',
             f"<title>{name}: {record['size']} bytes, {bits} bits</title>",
             f'<rect width="{width}" height="{height}" fill="#fff"/>',
             '<g fill="#567"><text x="8" y="17">offset</text><text x="72" y="17">size</text>'
             f'<text x="136" y="17">{name}, {record["size"]} bytes, {bits} bits</text></g>']
    for i, (offset, size, kind, member) in enumerate(rows):
        y = unit * (i + 1) + 4
        fill = "#e9eef3" if kind else "#fafafa"
        label = f"{kind} {member}" if kind else "(padding)"
        lines.append(
            f'<rect x="128" y="{y}" width="{width - 136}" height="{unit}" fill="{fill}" '
            'stroke="#789"/>'
            f'<text x="8" y="{y + 15}">{offset}</text><text x="72" y="{y + 15}">{size}</text>'
            f'<text x="136" y="{y + 15}" fill="{"#123" if kind else "#999"}">'
            f"{html.escape(label)}</text>")
    return "\n".join(lines + ["</svg>", ""])


def main() -> None:
    target = pathlib.Path(sys.argv[3])
    target.mkdir(parents=True, exist_ok=True)
    found = {"32": records(sys.argv[1]), "64": records(sys.argv[2])}
    pages = {}
    layouts: dict[str, dict] = {}
    for bits, of_bits in found.items():
        for name, record in of_bits.items():
            (target / f"{name}-{bits}.svg").write_text(picture(name, record, bits),
                                                       encoding="utf-8")
            pages[name] = pages.get(name, "") + f" * @image html {name}-{bits}.svg\n"
            layouts.setdefault(name, {})[bits] = {"size": record["size"],
                                                  "rows": with_gaps(record)}
    (target / "layouts.dox").write_text(
        "\n".join(f"/** @struct {name}\n{images} */\n" for name, images in pages.items()),
        encoding="utf-8")
    (target / "layouts.json").write_text(json.dumps(layouts), encoding="utf-8")


if __name__ == "__main__":
    main()
