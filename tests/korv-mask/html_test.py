"""The option --html: one self-contained page about the run, without clear values."""
import html.parser
import re

from command import CommandTest, main

ROWS = ("ID,CARD,NAME,CITY\n"
        "7719,4556737586899855,Petrosilius,Entenhausen\n"
        "7720,4111-2222,Xaverl,Gansbach\n"
        "7721,,Xaverl,Gansbach\n")
RULES = "ID = KEEP\nCARD = CCN, method=transpose, key=17\nNAME = AFF, method=reverse\nCITY = DROP\n"
# Elements that have no end.
VOID = {"meta", "br", "hr", "img", "input", "link", "col", "wbr"}


class Page(html.parser.HTMLParser):
    """The texts, elements and attributes of a page. Elements that do not match stay open."""

    def __init__(self, contents):
        super().__init__()
        self.open, self.attributes, self.elements, self.text = [], [], set(), ""
        self.feed(contents)
        self.close()

    def handle_starttag(self, tag, attrs):
        self.elements.add(tag)
        self.attributes += attrs
        if tag not in VOID:
            self.open.append(tag)

    def handle_startendtag(self, tag, attrs):
        self.elements.add(tag)
        self.attributes += attrs

    def handle_endtag(self, tag):
        if self.open and self.open[-1] == tag:
            self.open.pop()
        else:
            self.open.append("/" + tag)

    def handle_data(self, data):
        if self.open and self.open[-1] != "style":
            self.text += data + "\n"


class HtmlTest(CommandTest):
    def page(self, rows=ROWS, rules=RULES, *arguments, expect=1):
        self.mask(rows, rules, "--html", "page.html", *arguments, expect=expect)
        self.contents_of_page = self.contents("page.html").decode()
        return Page(self.contents_of_page)

    def test_it_is_a_whole_page(self):
        page = self.page()
        self.assertTrue(self.contents_of_page.lower().startswith("<!doctype html>"))
        self.assertEqual([], page.open)
        self.assertLessEqual({"html", "head", "title", "body", "meta"}, page.elements)
        self.assertRegex(self.contents_of_page.lower(), r"<meta charset=\"?utf-8")
        self.assertLess(len(self.contents_of_page), 64 * 1024)

    def test_it_needs_nothing_else(self):
        page = self.page()
        self.assertLessEqual(page.elements & {"link", "iframe", "object", "embed"}, set())
        for name, value in page.attributes:
            if name in ("src", "href", "data", "action", "srcset"):
                self.assertTrue(value.startswith(("#", "data:")), (name, value))
        self.assertNotRegex(self.contents_of_page, r"url\(\s*['\"]?(?!data:|#)|@import")

    def test_it_says_what_each_column_got_and_what_failed(self):
        page = self.page()
        for text in ("ID", "KEEP", "CARD", "CCN", "NAME", "AFF", "CITY", "DROP", "rules.txt"):
            self.assertIn(text, page.text)
        self.assertIn("too few digits", page.text)

    def test_it_holds_no_clear_value(self):
        self.page()
        for row in ROWS.splitlines()[1:]:
            for value in row.split(","):
                self.assertTrue(not value or value not in self.contents_of_page, value)

    def test_shapes_before_and_after(self):
        self.assertRegex(self.page().text, r"9999999999999999")

    def test_texts_are_escaped(self):
        name = '<script>alert("1")</script> & \'x\''
        header = '"' + name.replace('"', '""') + '"'
        page = self.page(f"{header},B\nab,1\n", "* = KEEP\n@1 = AFF, method=shuffle\n", expect=0)
        self.assertNotIn("<script>alert", self.contents_of_page)
        self.assertIn(name, page.text)
        self.assertEqual([], page.open)

    def test_names_of_files_are_escaped(self):
        self.write('<b>&"x".csv', "A\nab\n")
        self.write("rules.txt", "A = AFF, method=shuffle\n")
        result = self.run_program("-r", "rules.txt", '<b>&"x".csv', "-o", "out.csv", "--html",
                                  "page.html")
        self.assertEqual(0, result.returncode)
        self.assertNotIn(b"<b>&", self.contents("page.html"))

    def test_control_characters_do_not_reach_it(self):
        page = self.page('"\x1b[31m\u202eA\x07"\nab\n', "@1 = AFF, method=shuffle", expect=0)
        self.assertNotRegex(self.contents_of_page, "[\x00-\x08\x0b-\x1f\x7f\u202e]")
        self.assertEqual([], page.open)

    def test_it_is_the_same_for_every_number_of_workers(self):
        rows = "ID,CARD\n" + "1,4111111111111111\n2,77\n" * 100000
        pages = set()
        for jobs in ("1", "2", "8"):
            self.page(rows, "ID = KEEP\nCARD = CCN, method=transpose, key=17", "--jobs", jobs)
            pages.add(self.contents_of_page)
        self.assertEqual(1, len(pages))
        self.assertTrue(re.search(r"100[,.  ]?000", pages.pop()))

    def test_a_run_without_failures(self):
        page = self.page("A\nab\n", "A = AFF, method=shuffle", expect=0)
        self.assertEqual([], page.open)

    def test_a_run_that_does_not_begin_leaves_the_old_page(self):
        self.write("page.html", "old\n")
        self.mask(ROWS, "ID = KEEP", "--html", "page.html", expect=2)
        self.assertEqual(b"old\n", self.contents("page.html"))


main()
