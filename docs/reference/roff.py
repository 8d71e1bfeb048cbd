"""A manual page in the making: Doxygen's XML on one side, man macros on the other."""
import xml.etree.ElementTree as Xml

LISTS = ("orderedlist", "itemizedlist")
BLOCKS = ("parameterlist", "simplesect", "programlisting", "image", "verbatim", *LISTS)


def escaped(text: str) -> str:
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return "\\&" + text if text[:1] in (".", "'") else text


def inline(node: Xml.Element) -> str:
    """The text of an element on one line, with its fonts."""
    fonts = {"computeroutput": "\\fI", "bold": "\\fB", "emphasis": "\\fI"}
    parts = [escaped(" ".join((node.text or "").split("\n")))]
    for child in node:
        if child.tag == "sp":
            parts.append(" ")
        elif child.tag not in BLOCKS:
            text = inline(child)
            parts.append(f"{fonts[child.tag]}{text}\\fR" if child.tag in fonts else text)
        parts.append(escaped(" ".join((child.tail or "").split("\n"))))
    return "".join(parts).strip() if node.tag in ("para", "briefdescription") else "".join(parts)


def listing(node: Xml.Element) -> str:
    """The lines of a program."""
    def characters(part: Xml.Element) -> str:
        own = " " if part.tag == "sp" else part.text or ""
        return own + "".join(characters(child) + (child.tail or "") for child in part)
    return "\n".join(characters(line).rstrip() for line in node.iter("codeline"))


class Roff:
    def __init__(self) -> None:
        self.lines: list[str] = []

    def line(self, text: str) -> None:
        self.lines.append(" ".join(text.split()) if not text.startswith(".TH") else text)

    def section(self, name: str) -> None:
        self.lines.append(f".SH {name}")

    def subsection(self, name: str) -> None:
        self.lines.append(f'.SS "{escaped(name)}"')

    def paragraph(self, text: str) -> None:
        self.lines.append(".PP")
        self.line(text)

    def verbatim(self, text: str) -> None:
        self.lines += [".PP", ".nf", ".RS 4",
                       *(escaped(line) or "\\&" for line in text.splitlines()), ".RE", ".fi"]

    def item(self, head: str, text: str) -> None:
        self.lines += [".TP", head]
        self.line(text)

    def paragraphs(self, node: Xml.Element) -> None:
        """The prose of a description; lists of parameters and the like have sections of their own."""
        for para in node.findall("para"):
            text = inline(para)
            if text:
                self.paragraph(text)
            for block in para:
                if block.tag == "verbatim":
                    self.verbatim(block.text)
                elif block.tag in LISTS:
                    self.entries(block)
            for code in para.findall("programlisting"):
                if node.tag != "detaileddescription":
                    self.verbatim(listing(code))

    def entries(self, node: Xml.Element) -> None:
        for number, entry in enumerate(node.findall("listitem"), 1):
            head = f"{number}." if node.tag == "orderedlist" else "\\(bu"
            self.lines.append(f".IP {head} 4")
            for part in entry.findall("para"):
                self.line(inline(part))

    def parameters(self, name: str, node: Xml.Element, kind: str, values: dict[str, int]) -> None:
        lists = [part for part in node.iter("parameterlist") if part.get("kind") == kind]
        if lists and name:
            self.section(name)
        for entry in (entry for part in lists for entry in part.findall("parameteritem")):
            key = ", ".join(name.text for name in entry.iter("parametername"))
            value = f" ({values[key]})" if key in values else ""
            text = " ".join(inline(para) for para in entry.findall("parameterdescription/para"))
            self.item(f"\\fI{escaped(key)}\\fR{escaped(value)}", text)

    def results(self, node: Xml.Element, values: dict[str, int]) -> None:
        returns = [part for part in node.iter("simplesect") if part.get("kind") == "return"]
        codes = [part for part in node.iter("parameterlist") if part.get("kind") == "retval"]
        if returns or codes:
            self.section('"RETURN VALUE"')
        self.parameters("", node, "retval", values)
        for part in returns:
            self.lines.append(".PP")
            for para in part.findall("para"):
                self.line(inline(para)[:1].upper() + inline(para)[1:] + ".")

    def callback(self, node: Xml.Element, declaration: str) -> None:
        """What the item says further of a pointer to a function."""
        self.lines.append(".RS")
        self.verbatim(declaration)
        self.parameters("", node, "param", {})
        for part in (part for part in node.iter("simplesect") if part.get("kind") == "return"):
            self.paragraph(f"Returns {' '.join(inline(para) for para in part.findall('para'))}.")
        self.lines.append(".RE")

    def examples(self, node: Xml.Element) -> None:
        codes = list(node.iter("programlisting"))
        if codes:
            self.section("EXAMPLE")
        for code in codes:
            self.verbatim(listing(code))

    def text(self) -> str:
        return "\n".join(self.lines) + "\n"
