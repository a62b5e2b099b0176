"""The lines of docs/protocol.md, typed in at a phone's place and at the prompt of a live set."""

import os
import re
import subprocess

import homecase

PAGE = os.path.join(homecase.ROOT, "docs", "protocol.md")
GUID = r"[0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12}"


def blocks(kind):
    with open(PAGE, encoding="utf-8") as page:
        return re.findall(rf"^```{kind}\n(.*?)^```", page.read(), re.MULTILINE | re.DOTALL)


def exchanges():
    """Each line that is typed or printed, with the answer, wrapped lines joined."""
    found = []
    for line in "".join(blocks("console")).splitlines():
        if line.startswith(("$ ", "> ", "< ")):
            found.append([line, ""])
        else:
            found[-1][1] += line
    return found


class Protocol(homecase.OneSetCase):
    interval = 3

    def setUp(self):
        super().setUp()
        self.speaker.close()  # its port is the one that the page listens at
        self.prelude = blocks("sh")[0]
        phone, other = (re.search(rf"{name}=(\S+)", self.prelude).group(1)
                        for name in ("PHONE", "OTHER"))
        self.names = {"TV": self.tv.address, "ME": self.home.node("phone1").address,
                      "PHONE": phone, "OTHER": other, "ID": self.id}
        # The home here is none that `lab/home` has put up.
        self.prelude += f'prompt() {{ printf "%s\\n" "$*" > {self.tv.path("prompt")}; }}\n'
        # What the page supposes of addresses holds in a home of two sets; here there is one.
        self.prelude = re.sub(r"^export (TV|ME)=\S+", r"export \1", self.prelude,
                              flags=re.MULTILINE)

    def filled(self, text):
        for name, value in self.names.items():
            text = text.replace("$" + name, value)
        return text

    def type_in_shell(self, line):
        done = subprocess.run(self.home.node("phone1").at + ["bash", "-c", self.prelude + line],
                              env={**os.environ, **self.names}, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, timeout=30, check=False)
        return done.stdout.strip()

    def type_at_prompt(self, line):
        path = self.filled(line).removeprefix("get ")
        expected = self.filled(self.expected)
        self.wait_until(lambda: self.tv.ask(path) == expected, 5,
                        lambda: f"{path}: '{self.tv.ask(path)}' is not '{expected}'")
        return expected

    def printed(self, line):
        self.wait_until(lambda: self.filled(line) in self.tv.lines(), 5,
                        lambda: f"'{self.filled(line)}' is not in {self.tv.read()}")
        return ""

    def test_every_line_of_the_page_gives_what_the_page_says(self):
        count = 0
        self.assertGreater(len(exchanges()), 10)
        for line, self.expected in exchanges():
            with self.subTest(line=line):
                typed = {"$": self.type_in_shell, ">": self.type_at_prompt,
                         "<": self.printed}[line[0]]
                pattern = re.escape(self.filled(self.expected)).replace("GUID", GUID)
                self.assertRegex(typed(line[2:]), f"^{pattern}$")
                count += 1
        self.assertEqual(count, len(exchanges()))


if __name__ == "__main__":
    homecase.main()
