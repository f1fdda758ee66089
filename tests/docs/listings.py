"""Finds every listing of the documents and manual pages, and proves those that run_listings does not.

A listing is a fenced block, of which the language says how it is run, or in a manual page
paragraphs that are indented.  One that nothing runs is a failure.
"""
import collections
import glob
import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE, TREE, COMPILER = sys.argv.pop(1), sys.argv.pop(1), sys.argv.pop(1)
DOCUMENTS = sorted(glob.glob("*.md", root_dir=SOURCE) + glob.glob("docs/*.md", root_dir=SOURCE) +
                   glob.glob("*/**/README.md", root_dir=SOURCE, recursive=True))
DOCUMENTS = [path for path in DOCUMENTS if "node_modules" not in path and path[:6] != "build/"]
Listing = collections.namedtuple("Listing", "path line language name text")

# Commands that no test can run, and why.
EXEMPT = {
    "script/bootstrap": "installs packages; the continuous build begins with it",
    "script/server": "runs until it is stopped; every console listing is run beside it",
    "script/test": "runs the tests, this one among them",
    "ctest --preset": "runs the tests, this one among them",
    "apt-get install": "for a fresh system; the test of the packages runs it in one",
    "script/fuzz +#": "searches for an hour",
    "script/fuzz .*--update": "changes a document",
}

# What fragments of C++ take for granted.
PRELUDE = "".join(f"#include <webapi/{name}>\n" for name in
                  glob.glob("**/*.h", root_dir=f"{SOURCE}/include/webapi", recursive=True)) + """
#include <gtest/gtest.h>
#define WEBAPI_HANDLER_FILES ""
using ORBO::APIRequest;
using ORBO::APIResponse;
using ORBO::APIValidator;
void ShowProgress(unsigned long long done, unsigned long long total);
"""
# The languages of listings in manual pages.
MANUAL_LANGUAGES = [("cpp", "#include|ORBO::"), ("cmake", "find_package"), ("json", r"\{"),
                    ("command", "webapi "), ("conf", r"\w+=")]


def read(path):
    with open(os.path.join(SOURCE, path), encoding="utf-8") as file:
        return file.read()


def fenced(path):
    for match in re.finditer(r"^```(\S*) ?(.*)\n((?s:.*?))^```$", read(path), re.M):
        yield Listing(path, match.string.count("\n", 0, match.start()) + 2, *match.groups())


def indented(path):
    listings = []
    for match in re.finditer(r"(?<=\n\n)\t(?![\t*]).*\n(?:.+\n)*", read(path)):
        text = re.sub(r"\\(.)", r"\1", re.sub(r"(?m)\+\+$|^\t", "", match[0]))
        language = next((name for name, start in MANUAL_LANGUAGES if re.match(start, text)), "")
        if listings and not language and match.start() == end:  # goes on
            listings[-1] = listings[-1]._replace(text=listings[-1].text + "\n" + text)
        else:
            line = match.string.count("\n", 0, match.start()) + 1
            listings.append(Listing(path, line, language, "", text))
        end = match.end() + 1
    return listings


LISTINGS = [listing for path in DOCUMENTS for listing in fenced(path)]
LISTINGS += [listing for path in glob.glob("docs/man/*.scd", root_dir=SOURCE)
             for listing in indented(path)]


WITHOUT_BLOCKS = {path: re.sub(r"(?ms)^```.*?^```$", "", read(path)) for path in DOCUMENTS}


def of(language):
    return [listing for listing in LISTINGS if listing.language == language and not listing.name]


def is_exempt(command):
    return any(re.match(start, part.strip()) for part in command.split("&&") for start in EXEMPT)


class Case(unittest.TestCase):
    def setUp(self):
        work = tempfile.TemporaryDirectory()
        self.addCleanup(work.cleanup)
        self.work = work.name

    def write(self, name, text):
        path = os.path.join(self.work, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        return path

    def run_command(self, command, **options):
        result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                stdin=subprocess.DEVNULL, text=True, errors="replace",
                                check=False, **options)
        self.assertEqual(0, result.returncode, f"{command}\n{result.stdout[-8000:]}")
        return result.stdout


class Listings(Case):
    def test_each_has_a_way_to_be_run(self):
        ways = {"console", "sh", "cpp", "cmake", "json", "ini", "text", "command", "conf"}
        beside_server = {listing.path for listing in of("console")}
        for listing in LISTINGS:
            with self.subTest(f"{listing.path}:{listing.line}"):
                if listing.name:  # a file that commands of the document use
                    self.assertIn(listing.path, beside_server)
                    others = [other.text for other in LISTINGS if other != listing]
                    self.assertIn(listing.name, "".join(others) + "CMakeLists.txt" +
                                  read("tests/browser/client_test.mjs"))
                else:
                    self.assertIn(listing.language, ways)
        for path in DOCUMENTS:
            self.assertFalse(re.findall(r"\n\n {4}.*", WITHOUT_BLOCKS[path]), path)

    def test_notation_has_values_of_unit_tests_only(self):
        sources = "".join(read(path) for path in glob.glob("tests/unit/*.cpp", root_dir=SOURCE))
        sources = re.sub(r'"\s*\n\s*"', "", sources)
        for listing in of("text"):
            for value in re.findall(r"[\w.-]{14,}", listing.text):
                self.assertTrue(value in sources, value)

    def test_fragments_of_cpp_compile(self):
        source = PRELUDE
        for number, listing in enumerate(of("cpp")):
            text = re.sub("(?m)^#include.*", "", listing.text)
            if not re.search(r"(?m)^(?!if|for|while|switch)\w.*\) \{$", text):  # statements
                text = f"void f(APIRequest* request, APIResponse* response) {{\n{text}}}\n"
            source += "".join(re.findall("(?m)^#include.*\n", listing.text))
            source += f'namespace n{number} {{\n#line {listing.line} "{listing.path}"\n{text}}}\n'
        flags = subprocess.check_output(["pkg-config", "--cflags", "jsoncpp"], text=True).split()
        self.run_command([COMPILER, "-std=c++17", "-fsyntax-only", "-Wall", "-Werror", "-Wno-unused", "-Wno-return-type",
                          f"-I{SOURCE}/include", *flags, self.write("listings.cpp", source)])

    def test_fragments_of_cmake_configure(self):
        text = "cmake_minimum_required(VERSION 3.25)\nproject(listings CXX)\n"
        text += "find_package(GTest REQUIRED)\nfind_package(webapi-KEP5 REQUIRED)\n"
        text += "webapi_add_handler(my_handler my_handler.cpp)\n"
        text += "".join(listing.text for listing in of("cmake"))
        self.write("CMakeLists.txt", text)
        for name in re.findall(r"[\w./]+\.(?:cpp|lib)", text):
            self.write(name, "")
        self.run_command(["cmake", "-B", "build", f"-DCMAKE_CXX_COMPILER={COMPILER}",
                          f"-DCMAKE_PREFIX_PATH={TREE}"], cwd=self.work)

    @unittest.skipUnless(shutil.which("systemd-analyze"), "needs systemd")
    def test_systemd_takes_its_configuration(self):
        for listing in of("ini"):
            self.write("a.service.d/a.conf", listing.text)
            unit = self.write("a.service", "[Service]\nExecStart=/bin/true\n")
            self.assertEqual("", self.run_command(["systemd-analyze", "verify", unit]))

    def test_configuration_is_what_its_readers_take(self):
        for listing in of("conf"):
            for key in re.findall(r"(?m)^(\w+)=", listing.text):
                self.assertIn(f"\n#{key}=", read("data/platform.conf.sample"))
        for listing in of("json"):
            if listing.path.endswith(".scd"):
                name = re.search(r'"(ORBO[.\w]+)"', listing.text)[1]
                path = self.write(f"{name}.lib", listing.text)
                self.run_command([f"{TREE}/bin/webapi", "check", "--strict", "--no-libraries", path])
            else:
                json.loads(listing.text)
                for name in re.findall("/share/webapi-KEP5/([^\"]+)", listing.text):
                    self.assertTrue(os.path.exists(f"{SOURCE}/data/{name}"), name)

    def test_commands_of_manual_pages_succeed(self):
        directory = f"{self.work}/usr/orbo/orboman/webapi"
        shutil.copytree(f"{TREE}/examples/webapi", directory)
        for name in ("etc/orbo", "run/orbo/sessions", "var/lib/orbo/tokens"):
            os.makedirs(os.path.join(self.work, name), 0o700)
        self.write("etc/orbo/passwords", "alice:x\n")
        os.chmod(f"{self.work}/etc/orbo/passwords", 0o600)
        commands = "".join(listing.text for listing in of("command"))
        for command in ["webapi session open alice", *filter(None, commands.split("\n"))]:
            self.run_command([f"{TREE}/bin/webapi", *shlex.split(command)[1:]],
                             env={**os.environ, "WEBAPI_ROOT": self.work})

    def test_commands_name_what_there_is(self):
        commands = "&&".join(listing.text for listing in of("sh"))
        for start in EXEMPT:
            self.assertTrue(re.search(f"(?m)^{start}|&& ?{start}", commands), f"not there: {start}")
        presets = re.findall('"name": "(.*?)"', read("CMakePresets.json"))
        for listing in of("sh"):
            for command in re.split(r"\n|&&", listing.text):
                with self.subTest(command):
                    self.assertLessEqual(set(re.findall(r"--preset (\S+)", command)), set(presets))
                    for path in re.findall(r"^ *((?:script|bench)/\S+)", command):
                        self.assertTrue(os.access(f"{SOURCE}/{path}", os.X_OK))


class Commands(Case):
    """Runs the blocks of shell commands in a copy of the sources; takes minutes."""

    def test_run_in_a_clean_tree(self):
        copy = f"{self.work}/copy"
        shutil.copytree(SOURCE, copy, symlinks=True,
                        ignore=shutil.ignore_patterns("build", ".git", "node_modules"))
        environment = {**os.environ, "platform":
                       f"{TREE}/src/platform/linux/libwebapi_platform_linux.a"}
        for listing in of("sh"):
            for command in listing.text.splitlines():
                if not is_exempt(command):
                    # What is installed goes below a directory of the test's.
                    command = re.sub("^cmake --install", f"DESTDIR={self.work}/dest \\g<0>", command)
                    print(f"{listing.path}: {command}", flush=True)
                    self.run_command(["bash", "-ec", command], cwd=copy, env=environment)


class References(Case):
    def test_links_and_paths_lead_somewhere(self):
        anchors = {}
        for path in DOCUMENTS:
            titles = re.findall("(?m)^#+ (.*)", WITHOUT_BLOCKS[path])
            anchors[path] = {re.sub(r"[^\w -]", "", title.lower()).replace(" ", "-")
                             for title in titles}
        for path in DOCUMENTS:
            text = WITHOUT_BLOCKS[path]
            links = re.findall(r"\]\(([^)\s]*)\)", text)
            for target, anchor in (link.split("#") if "#" in link else (link, "") for link in links):
                with self.subTest(f"{path}: {target}#{anchor}"):
                    target = os.path.normpath(os.path.join(os.path.dirname(path), target)
                                              if target else path)
                    self.assertTrue(os.path.exists(os.path.join(SOURCE, target)))
                    self.assertTrue(not anchor or anchor in anchors[target])
            for name in re.findall(r"[`( ]((?:script|bench|tests|docs|src|examples|data|client|fuzz"
                                   r"|include|tools|faults)/[\w*./-]*\w)",
                                   text.replace("NAME", "*")):
                with self.subTest(f"{path}: {name}"):
                    self.assertTrue(glob.glob(name, root_dir=SOURCE))

    def test_error_codes_are_those_of_the_sources(self):
        document = read("docs/errors.md")
        codes = dict(re.findall(r"(?m)^\| (\d{3}) \| (.*?) \|", document[:document.index("## ")]))
        names = dict(re.findall(r"(k\w+) = (\d+)", read("src/util/error_codes.h")))
        self.assertEqual(sorted(names.values()), sorted(codes))
        for name, text in re.findall(r"case (\w+):\s*return \"(.*)\"",
                                     read("tools/webapi/error_meaning.cpp")):
            self.assertEqual(text, codes[names[name]])
        polling = re.findall(r"ERROR_\w+ = (\d+)", read("include/webapi/APIPolling.h"))
        self.assertEqual(polling, re.findall(r"(?m)^\| (5\d\d) \|", read("docs/tasks.md")))
        upload = re.findall(r"int k\w+ = (-\d+);", read("src/platform/upload.h") +
                            read("src/transfer/APIUploadPrivate.cpp"))
        told = re.findall(r"(?m)^\| (-\d+)(?:, (-\d+))? \|", document)
        self.assertEqual(set(upload), {code for pair in told for code in pair if code})
        own = re.findall(r"kError\w+ = (1\d{3})", read("handlers/session/session_errors.h") +
                         read("handlers/parameter_key/ParameterKey.cpp"))
        self.assertEqual(own, re.findall(r"(?m)^\| (1[12]\d\d) \|", document))
        self.assertLessEqual(set(re.findall(r"(?m)^### (\d+)", document)), set(codes))

    def test_settings_are_those_that_are_read(self):
        table = dict(re.findall(r"(?m)^\| `([a-z_]+)` \| (.*?) \|", read("docs/configuration.md")))
        manual = dict(re.findall(r"(?m)^\*(\w+)\*=(?:.*\n\t)(?s:.*?)Default:\s+(\w+)",
                                 read("docs/man/platform.conf.5.scd")))
        self.assertEqual(sorted(manual), sorted(table))
        self.assertEqual(sorted(re.findall(r"(?m)^#(\w+)=", read("data/platform.conf.sample"))),
                         sorted(table))
        for key, default in table.items():
            if default != "owner of the directories":
                self.assertEqual(manual[key], default)
        sources = "".join(read(path) for path in
                          glob.glob("src/platform/**/*.cpp", root_dir=SOURCE, recursive=True))
        calls = re.findall(r"(?:Setting|Switch)s?(?:\(\{?|\[\] = )((?:\s*\"[a-z_]+\",?)+)", sources)
        self.assertEqual(set(table), set(re.findall(r"\w+", " ".join(calls))))

    def test_a_port_is_told_all_that_the_library_needs(self):
        def names(*arguments):
            lines = self.run_command(["nm", "-C", *arguments]).splitlines()
            return {re.sub(r"(\[abi:\w+\])?\(.*|@.*", "", line[19:]) for line in lines}
        core = f"{TREE}/src/libwebapi_core.a"
        libraries = re.findall(r"=> (/\S+)", self.run_command(["ldd", f"{TREE}/bin/webapi"]))
        self.assertTrue(libraries)
        given = names("--defined-only", core).union(
            *(names("-D", "--defined-only", library) for library in libraries
              if "webapi" not in library))
        needed = names("-u", core) - given - {"", "_GLOBAL_OFFSET_TABLE_", "__dso_handle"}
        rows = re.findall(r"(?m)^\| .*?\| (`.*?) \|", read("docs/porting.md").split("## ")[1])
        self.assertEqual(needed, set(re.findall("`(.*?)`", " ".join(rows))))


if __name__ == "__main__":
    unittest.main()
