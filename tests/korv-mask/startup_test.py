"""The cost of opening rules grows with their number, not with its square (fault 6). Allocations are
counted: nothing is timed."""
from command import main
from hostile import HostileTest


class StartupTest(HostileTest):
    def allocations(self, columns, rules):
        self.write("in.csv", ",".join(f"COLUMN_{i}" for i in range(columns)) + "\n" +
                   ",".join(["ab"] * columns) + "\n")
        self.write("rules.txt", rules(columns))
        result = self.run_failing("heap", "", "-r", "rules.txt", "in.csv", "-o", "out.csv",
                                  "--jobs", "1")
        self.assertEqual((0, b""), (result.returncode, result.stderr))
        self.assertEqual(b",".join([b"ba"] * columns), self.contents("out.csv").split()[1])
        return result.calls

    def test_many_rules_and_columns(self):
        few, many = 500, 4000
        for rules in (lambda count: "".join(f"COLUMN_{i} = AFF, method=shuffle\n"
                                            for i in range(count)),
                      lambda count: "".join(f'"COLUMN_{count - i - 1}" = AFF, method=shuffle\n'
                                            for i in range(count)),
                      lambda count: "".join(f"@{i + 1} = AFF, method=shuffle\n"
                                            for i in range(count)),
                      lambda count: "COLUMN_* = AFF, method=shuffle\n"):
            ratio = self.allocations(many, rules) / self.allocations(few, rules)
            self.assertLess(ratio, 1.5 * many / few)


main()
