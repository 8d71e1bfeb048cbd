"""Manual pages out of Doxygen's XML, and the check that every status is documented.

Usage: man.py XML-FOLDER LAYOUTS.json VERSION DATE TARGET-FOLDER

Pages under the names of all functions, records, enumerations, callbacks and tables, korv_HEADER.3 for each
header, korv.7 with a list of all, and korv_conventions.7. Functions that share their text, as twins do, have pages
of their own. Macros, further types, and all of the C++ headers are in the page of their header.

Doxygen's own manual pages have neither results nor examples of a function, nor layouts of records.
"""
import json
import pathlib
import re
import sys
import textwrap
import xml.etree.ElementTree as Xml

from roff import Roff, escaped, inline

XML, LAYOUTS, VERSION, DATE, TARGET = sys.argv[1:]
# The enumerations of the values that functions return.
STATUSES = ("KorvStatus", "CnvStatus", "KorvProcessingClass", "KorvMaskStatus")
# Since which version each header exists, and the types of callbacks. main fills them.
SINCE: dict[str, str] = {}
CALLBACKS: set[str] = set()
RECORDS = json.loads(pathlib.Path(LAYOUTS).read_text(encoding="utf-8"))


def parse(name: str) -> Xml.Element:
    return Xml.parse(pathlib.Path(XML, name)).getroot()


def compounds(kind: str) -> list[Xml.Element]:
    return [parse(f"{entry.get('refid')}.xml").find("compounddef")
            for entry in parse("index.xml").findall("compound") if entry.get("kind") == kind]


def opened(name: str, section: int, purpose: str) -> Roff:
    page = Roff()
    page.line(f'.TH {name} {section} "{DATE}" "korv-support {VERSION}" "korv"')
    page.section("NAME")
    page.line(f"{name} \\- {purpose}")
    return page


def see_also(page: Roff, names: list[str]) -> None:
    page.section("SEE ALSO")
    for name in names:
        page.line(f".BR {name} (3),")
    page.line(".BR korv (7),")
    page.line(".BR korv_conventions (7)")


def stem(name: str) -> str:
    """What the names of twins have in common: narrow and wide, 16 and 32 bits, block and anchor."""
    return re.sub(r"(?<=To)W(?=[UL])|W$|EAB$|1$|_[24]$", "", name)


def summary(node: Xml.Element, name: str) -> str:
    """The brief description without the name that it begins with."""
    text = " ".join(inline(node.find("briefdescription")).split()).rstrip(".")
    text = text.removeprefix(escaped(name)).strip() or escaped(name)
    return text[:1].lower() + text[1:]


def prototype(function: Xml.Element) -> str:
    text = "".join(function.find("type").itertext()) + " "
    text = text.replace("* ", "*") + function.findtext("name") + function.findtext("argsstring")
    return "\n".join(textwrap.wrap(text + ";", 76, subsequent_indent="    "))


def history(page: Roff, header: str) -> None:
    page.section("HISTORY")
    page.line(f"Since version {SINCE[header]}.")


LINKS = {"mask.h": "-lkorvmask", "datacnv.h": "-lKORVDataCnvLib", "provider.h": ""}


def function_page(function: Xml.Element, header: str, statuses: dict[str, int], twins: list[str]) -> str:
    name = function.findtext("name")
    file = header.removeprefix("korv/")
    page = opened(name, 3, summary(function, name))
    page.section("SYNOPSIS")
    page.verbatim(f"#include <{header}>\n\n{prototype(function)}")
    if LINKS.get(file, "-lKORVSupport"):
        page.line(f"Link with {escaped(LINKS.get(file, '-lKORVSupport'))}.")
    page.section("DESCRIPTION")
    page.paragraphs(function.find("briefdescription"))
    page.paragraphs(function.find("detaileddescription"))
    page.parameters("PARAMETERS", function, "param", {})
    page.results(function, statuses)
    threads = [note for note in function.iter("simplesect") if note.get("kind") == "note"]
    page.section("THREADS")
    owned = "handles" if header == "korv/mask.h" else "records and buffers"
    page.line(inline(threads[0]) if threads else
              f"May run in any number of threads at once on distinct {owned}.")
    page.examples(function)
    history(page, header)
    see_also(page, twins + types_in(prototype(function)) + [f"korv_{file}"])
    return page.text()


def types_in(text: str) -> list[str]:
    """The records and callbacks that a declaration names."""
    return [name for name in (*RECORDS, *CALLBACKS) if re.search(rf"\b{name}\b", text)]


def small_page(member: Xml.Element, header: str, users: list[str]) -> str:
    """The page of an enumeration, of the type of a callback, or of a table."""
    name = member.findtext("name")
    page = opened(name, 3, summary(member, name))
    page.section("SYNOPSIS")
    kind = member.get("kind")
    declaration = {"enum": lambda: f"enum {name}", "typedef": lambda: f"typedef {pointer(member)}",
                   "variable": lambda: variable(member)}[kind]()
    page.verbatim(f"#include <{header}>\n\n{declaration}")
    page.section("DESCRIPTION")
    page.paragraphs(member.find("briefdescription"))
    page.paragraphs(member.find("detaileddescription"))
    if kind == "enum":
        page.section("VALUES")
        enum_values(page, member)
    page.parameters("PARAMETERS", member, "param", {})
    page.results(member, {})
    history(page, header)
    others = [other for other in users + types_in(declaration) if other != name]
    see_also(page, others + [f"korv_{header.removeprefix('korv/')}"])
    return page.text()


def variable(member: Xml.Element) -> str:
    return f"{type_text(member)} {member.findtext('name')}{member.findtext('argsstring')};"


def pointer(member: Xml.Element) -> str:
    """The declaration of a pointer to a function."""
    text = type_text(member).replace("(*", " (*") + member.findtext("name")
    return text + member.findtext("argsstring") + ";"


def record_page(record: Xml.Element) -> str:
    name = record.findtext("compoundname")
    page = opened(name, 3, summary(record, name))
    page.section("SYNOPSIS")
    page.verbatim(f"#include <korv/{record.find('includes').text}>")
    page.section("DESCRIPTION")
    page.paragraphs(record.find("briefdescription"))
    page.paragraphs(record.find("detaileddescription"))
    members = {member.findtext("name"): member for member in record.iter("memberdef")}
    for bits, layout in RECORDS[name].items():
        page.paragraph(f"It has {layout['size']} bytes in the {bits}\\-bit build:")
        rows = [f"{offset:>6} {size:>4}  {kind} {member}" if member else f"{offset:>6} {size:>4}  -"
                for offset, size, kind, member in layout["rows"]]
        page.verbatim("offset size  member\n" + "\n".join(rows))
    page.section("MEMBERS")
    for member in (members[member] for _, _, _, member in RECORDS[name]["32"]["rows"] if member):
        page.item(f"\\fI{escaped(member.findtext('name'))}\\fR", described(member))
        if member.findtext("argsstring").startswith(")("):
            page.callback(member, pointer(member))
    history(page, f"korv/{record.find('includes').text.removeprefix('korv/')}")
    see_also(page, [f"korv_{pathlib.Path(record.find('includes').text).name}"])
    return page.text()


def described(member: Xml.Element) -> str:
    texts = [member.find("briefdescription"), *member.findall("detaileddescription/para")]
    return " ".join(inline(text) for text in texts).strip()


def full_name(member: Xml.Element) -> str:
    return member.findtext("qualifiedname") or member.findtext("name")


def item(page: Roff, member: Xml.Element, value: str = "") -> None:
    page.item(f"\\fI{escaped(full_name(member))}\\fR{escaped(value)}", described(member))


def enum_values(page: Roff, enum: Xml.Element) -> None:
    number = -1
    for value in enum.iter("enumvalue"):
        given = value.findtext("initializer")
        number = int(given.strip("= ()")) if given else number + 1
        item(page, value, f" ({number})")


def constants(page: Roff, defines: list[Xml.Element], enums: list[Xml.Element]) -> None:
    """Macros that stand for a value, and enumerations of C++."""
    plain = [member for member in defines
             if member.find("param") is None and member.find("initializer") is not None
             and "attribute" not in member.findtext("initializer")]
    if plain or enums:
        page.section("CONSTANTS")
    for member in plain:
        item(page, member, f" ({member.findtext('initializer')})")
    for enum in enums:
        page.subsection(full_name(enum))
        page.line(described(enum))
        enum_values(page, enum)


def header_page(file: Xml.Element, header: str, classes: list[Xml.Element],
                members: list[Xml.Element]) -> str:
    """What a header declares, except the functions and records that have pages of their own."""
    page = opened(f"korv_{file.findtext('compoundname')}", 3, summary(file, header))
    page.section("SYNOPSIS")
    page.verbatim(f"#include <{header}>")
    if file.find("detaileddescription/para") is not None:
        page.section("DESCRIPTION")
        page.paragraphs(file.find("detaileddescription"))

    def of(kind: str) -> list[Xml.Element]:
        return [member for member in members if member.get("kind") == kind]

    constants(page, of("define"), of("enum") if classes else [])
    types = [member for member in of("typedef") if member.findtext("name") not in CALLBACKS and
             not re.match(r"(struct|enum|char)\b", type_text(member))]
    if types or classes:
        page.section("TYPES")
    for member in classes:
        page.item(f"\\fI{escaped(member.findtext('compoundname'))}\\fR", described(member))
    for member in types:
        item(page, member)
        page.verbatim(type_text(member) + (member.findtext("argsstring") or ""))
    functions = of("function")
    if classes:
        page.section("FUNCTIONS")
        for member in functions:
            item(page, member)
            page.verbatim(prototype(member))
    page.examples(file)
    pages = [] if classes else [member.findtext("name") for member in functions + small(members)]
    history(page, header)
    see_also(page, pages + [record.text for record in file.findall("innerclass") if record.text in RECORDS])
    return page.text()


def small(members: list[Xml.Element]) -> list[Xml.Element]:
    """The enumerations, types of callbacks and tables among the members of a header."""
    return [member for member in members
            if member.get("kind") in ("enum", "variable") or member.findtext("name") in CALLBACKS]


def type_text(member: Xml.Element) -> str:
    return "".join(member.find("type").itertext())


def conventions_page() -> str:
    page = opened("korv_conventions", 7, "what holds for every function of the korv support library")
    page.section("DESCRIPTION")
    page.paragraphs(parse("conventions.xml").find("compounddef/detaileddescription"))
    return page.text()


def overview_page(headers: list[Xml.Element], functions: list[tuple[Xml.Element, str]]) -> str:
    page = opened("korv", 7, "support library, masking engine and providers for data masking")
    page.section("DESCRIPTION")
    page.line("The headers, their functions and their records have manual pages of section 3.")
    for file in headers:
        name = file.findtext("compoundname")
        page.subsection(f"korv_{name} (3)")
        page.paragraphs(file.find("briefdescription"))
        for function, header in functions:
            if header == f"korv/{name}":
                own = function.findtext("name")
                page.item(f"\\fB{escaped(own)}\\fR (3)", summary(function, own))
        for record in file.findall("innerclass"):
            if record.text in RECORDS:
                page.item(f"\\fB{escaped(record.text)}\\fR (3)", "a record")
        for member in small(list(file.iter("memberdef"))) if name.endswith(".h") else []:
            own = member.findtext("name")
            page.item(f"\\fB{escaped(own)}\\fR (3)", summary(member, own))
    page.section("SEE ALSO")
    page.line(".BR korv_conventions (7),")
    page.line(".BR korv-mask (1)")
    return page.text()


def uses(function: Xml.Element, member: Xml.Element) -> bool:
    """The function takes the type, or the values of the enumeration are among its results."""
    values = {value.findtext("name") for value in member.iter("enumvalue")}
    results = {code.text for part in function.iter("parameterlist") if part.get("kind") == "retval"
               for code in part.iter("parametername")}
    return bool(values & results) or member.findtext("name") in prototype(function)


def check(functions: list[tuple[Xml.Element, str]], statuses: dict[str, int]) -> list[str]:
    """Every function that returns something says what; every status is the result of one."""
    faults, used = [], set()
    for function, _ in functions:
        name = function.findtext("name")
        codes = [code.text for part in function.iter("parameterlist")
                 if part.get("kind") == "retval" for code in part.iter("parametername")]
        says = codes or any(part.get("kind") == "return" for part in function.iter("simplesect"))
        if "".join(function.find("type").itertext()) != "void" and not says:
            faults.append(f"{name}: its result is not documented")
        faults += [f"{name}: there is no status {code}" for code in codes
                   if code not in statuses and not code.lstrip("-").isdigit()]
        used.update(codes)
        if function.find(".//programlisting") is None:
            faults.append(f"{name}: docs/reference/examples has no example")
    return faults + [f"{code}: no function returns it" for code in statuses
                     if code not in used and not code.startswith("KORV_TOKID_")]


def main() -> None:
    target = pathlib.Path(TARGET)
    for folder in ("man3", "man7"):
        (target / folder).mkdir(parents=True, exist_ok=True)
    files = compounds("file")
    functions = [(member, file.find("location").get("file").removeprefix("include/"))
                 for file in files for member in file.iter("memberdef")
                 if member.get("kind") == "function"]
    statuses = {value.findtext("name"): int(value.findtext("initializer").lstrip("= "))
                for file in files for enum in file.iter("memberdef")
                if enum.findtext("name") in STATUSES
                for value in enum.iter("enumvalue")}
    faults = check(functions, statuses)
    if faults or not functions:
        sys.exit("\n".join(faults) or "no functions")
    headers = [file for file in files if file.findtext("compoundname").endswith((".h", ".hpp"))]
    for file in headers:
        since = next((part for part in file.iter("simplesect") if part.get("kind") == "since"), None)
        if since is None:
            sys.exit(f"{file.findtext('compoundname')}: does not say since which version it exists")
        SINCE[f"korv/{file.findtext('compoundname')}"] = inline(since.find("para"))
        CALLBACKS.update(member.findtext("name") for member in file.iter("memberdef")
                         if member.get("kind") == "typedef" and type_text(member).endswith("(*"))
    records = [record for record in compounds("struct") if record.findtext("compoundname") in RECORDS]
    if len(records) != len(RECORDS):
        sys.exit("a record is not documented")
    names = [function.findtext("name") for function, _ in functions]
    pages = {}
    for (function, header), name in zip(functions, names):
        twins = [other for other in names if stem(other) == stem(name) and other != name]
        pages[f"man3/{name}.3"] = function_page(function, header, statuses, twins)
    pages |= {f"man3/{record.findtext('compoundname')}.3": record_page(record) for record in records}
    classes = [record for record in compounds("struct") + compounds("class")
               if "::" in record.findtext("compoundname")]
    inside = [member for space in compounds("namespace") for member in space.iter("memberdef")]
    for file in headers:
        name = file.findtext("compoundname")
        header = file.find("location").get("file").removeprefix("include/")
        parts = (classes, inside) if name.endswith(".hpp") else ([], list(file.iter("memberdef")))
        pages[f"man3/korv_{name}.3"] = header_page(file, header, *parts)
        for member in small(parts[1]) if name.endswith(".h") else []:
            users = [function.findtext("name") for function, _ in functions
                     if uses(function, member)]
            pages[f"man3/{member.findtext('name')}.3"] = small_page(member, header, users)
    pages["man7/korv_conventions.7"] = conventions_page()
    pages["man7/korv.7"] = overview_page(headers, functions)
    for path, text in pages.items():
        (target / path).write_text(text, encoding="utf-8")
    print(f"{len(functions)} functions, {len(records)} records, {len(headers)} headers, "
          f"{len(pages)} manual pages")


if __name__ == "__main__":
    main()
