"""The option --diff: some rows before and after, as shapes."""
from command import CommandTest, main

ROWS = ("ID,NAME,CARD,CITY\n"
        "7719,Peter Übel,4556 7375 8689 9855,Entenhausen\n"
        "7720,Zoë,4111,Gänseburg\n"
        "7721,Tick,4556737586899855,\n")
RULES = "ID = KEEP\nNAME = AFF, method=reverse\nCARD = CCN, method=transpose, key=17\nCITY = DROP\n"
CLEAR = ["7719", "Peter", "Übel", "4556 7375 8689 9855", "Entenhausen"]


class DifferenceTest(CommandTest):
    def diff(self, *arguments, expect=None):
        self.write("in.csv", ROWS)
        self.write("rules.txt", RULES)
        result = self.run_program("-r", "rules.txt", "in.csv", "--diff", *arguments)
        if expect is not None:
            self.assertEqual(expect, result.returncode, result.stderr)
        return (result.stdout + result.stderr).decode()

    def test_clear_values_are_replaced_by_their_shapes(self):
        shown = self.diff("1", expect=0)
        for shape in ("Aaaaa Aaaa", "9999 9999 9999 9999", "Aaaaaaaaaaa"):
            self.assertIn(shape, shown)
        for value in CLEAR:
            self.assertNotIn(value, shown)

    def test_masked_values_are_shown(self):
        shown = self.diff("1")
        self.assertIn("lebÜ reteP", shown)
        masked = self.mask(ROWS, RULES).out.decode().splitlines()[1].split(",")[2]
        self.assertIn(masked, shown)

    def test_clear_values_on_request(self):
        shown = self.diff("1", "--show-clear")
        for value in ("Peter Übel", "4556 7375 8689 9855", "Entenhausen", "7719"):
            self.assertIn(value, shown)

    def test_no_more_rows_than_asked_for(self):
        one, two, all_rows = (self.diff(count, "--show-clear") for count in ("1", "2", "100"))
        self.assertNotIn("Gänseburg", one)
        self.assertIn("Gänseburg", two)
        self.assertNotIn("Tick", two)
        self.assertIn("Tick", all_rows)

    def test_values_that_fail_stay_hidden(self):
        shown = self.diff("3")
        for value in ("Gänseburg", "4111", "Tick", "Zoë"):
            self.assertNotIn(value, shown)

    def test_control_characters_do_not_reach_the_terminal(self):
        self.write("in.csv", 'A\n"\x1b[31mred\x07\u202eab"\n')
        self.write("rules.txt", "A = AFF, method=reverse\n")
        for arguments in ((), ("--show-clear",)):
            result = self.run_program("-r", "rules.txt", "in.csv", "--diff", "1", *arguments)
            for character in ("\x1b", "\x07", "\u202e"):
                self.assertNotIn(character.encode(), result.stdout + result.stderr)


main()
