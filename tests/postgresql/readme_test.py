"""The example of the extension's README prints what stands below it."""
import re

from server import ROOT, Server, main, unittest

BLOCKS = re.compile(r"^```(sql|text)\n(.*?)^```$", re.M | re.S)


class ReadmeTest(unittest.TestCase):
    def test_the_example(self):
        server = Server()
        self.addCleanup(server.stop)
        document = (ROOT / "postgresql/README.md").read_text(encoding="utf-8")
        blocks = BLOCKS.findall(document)
        self.assertEqual(["sql", "text"], [language for language, _ in blocks])
        script = server.write("example.sql", blocks[0][1])
        printed = server.run("psql", "-Xq", "-v", "ON_ERROR_STOP=1", "-f", script)
        self.assertEqual(blocks[1][1], printed)


main()
