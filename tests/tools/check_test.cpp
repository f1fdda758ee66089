#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "CommandRun.h"

namespace tools {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

const std::string kLib = R"("lib": "x", )";
const std::string kRange = R"("minVersion": 1, "maxVersion": 1, )";
const std::string kMethods = R"("methods": {"1": ["m"]})";

// A description file; its members begin on the second line.
std::string Api(const std::string& members, const std::string& name = "ORBO.T") {
  return "{\"" + name + "\": {\n" + members + "}}";
}
std::string With(const std::string& members) { return Api(kLib + kRange + kMethods + members); }
std::string Versions(const std::string& versions, const std::string& range = kRange) {
  return Api(kLib + range + "\"methods\": {\n" + versions + "}");
}
std::string List(const std::string& list) { return Versions("\"1\": [\n" + list + "]"); }

// A file, and how its one finding begins from the line on; "" if there is none.
struct Sample {
  std::string text;
  const char* finding;
};

class Check : public CommandTest {
 protected:
  void Write(const std::string& path, const std::string& text) const {
    fs::create_directories(fs::path(root() + "/" + path).parent_path());
    std::ofstream(root() + "/" + path) << text;
  }
  // Writes each sample as `name` into a directory of its own, and checks all in one run.
  void CheckSamples(const std::string& name, const std::vector<Sample>& samples) const {
    std::string arguments = "check --no-libraries";
    for (std::size_t i = 0; i < samples.size(); ++i) {
      const std::string path = std::to_string(i) + "/";
      Write(path + "lib.def", R"({"allowUser": ["admin.local"]})");
      Write(path + name, samples[i].text);
      arguments.append(" ").append(path).append(name);
    }
    std::vector<std::string> findings(samples.size());
    std::istringstream output(Run(arguments).output);
    for (std::string line; std::getline(output, line) && line.find('/') != std::string::npos;) {
      findings[std::stoul(line)] += line.substr(line.find(name) + name.size() + 1) + "\n";
    }
    for (std::size_t i = 0; i < samples.size(); ++i) {
      SCOPED_TRACE(samples[i].text);
      EXPECT_THAT(findings[i], StartsWith(samples[i].finding));
      EXPECT_EQ(findings[i].find('\n') + 1, findings[i].size()) << "one fault, one finding";
      EXPECT_EQ(findings[i].empty(), *samples[i].finding == '\0') << findings[i];
    }
  }
  // The findings about the web-API directory, with its name left out.
  std::string Directory(const std::string& options = "") const {
    std::string text = Run("check " + options).output;
    const std::string path = root() + "/" + directory_;
    for (std::size_t at = 0; (at = text.find(path)) != std::string::npos;) {
      text.erase(at, path.size());
    }
    return text;
  }

  const std::string directory_ = "usr/orbo/orboman/webapi/";
};

TEST_F(Check, NamesEachFaultOfADescription) {
  CheckSamples(
      "ORBO.T.lib",
      {{With(""), ""},
       {"// text\n" + With(R"(, "count": false, "appPriv": "p", "requestFormat": "")"), ""},
       {List(R"("a", {"b": {}}, {"c": {"allowUpload": true, "deferUpload": true}})"), ""},
       // No JSON.
       {"", "1:1: error: the text ends where"},
       {"{\n \"ORBO.T\" {}}", "2:11: error: \":\" is due"},
       {"{\"a\":\n 'x'}", "2:2: error: this is no JSON value"},
       {"{\"a\": {},\n}", "1:9: error: no \",\" may stand"},
       {"{\"a\": [1\n 2]}", "2:2: error: \",\" or \"]\" is due"},
       {"{\"a\": \"\\x\"}", "1:7: error: this string has a wrong escape"},
       {"{}\n/* x", "2:1: error: this comment does not end"},
       {"{}\n{}", "2:1: error: nothing may follow"},
       {"{\"a\": " + std::string(600, '['), "1:518: error: this is nested too deep"},
       {"\xef\xbb\xbf{}", "1:1: error: no byte order mark"},
       {With(", \"x\": 1e999"), "2: error: this number is too large"},
       {With(", \n\"count\": true, \"count\": true"), "3: error: a second \"count\""},
       {"{}//\n// \xff", "2:4: warning: this is no UTF-8"},
       // What the loader leaves out.
       {"{\r\n\"ORBO.T\": 5}", "2: error: the loader leaves this API out: it must be an object"},
       {Api(kRange + kMethods), "1: error: the loader leaves this API out: \"lib\" is missing"},
       {Api(kLib + "\"minVersion\": 1, \n\"maxVersion\": 1.0, " + kMethods),
        "3: error: the loader leaves this API out: \"maxVersion\" must be an integer"},
       {With(",\n\"priority\": 11"), "3: error: the loader leaves this API out: \"priority\""},
       // Its members.
       {With(",\n\"alowUser\": []"),
        "3: warning: the system knows no member \"alowUser\"; did you mean \"allowUser\"?"},
       {With(", \"count\": 0"), "2: error: \"count\" must be true or false"},
       {With(", \"appPriv\": \"a b\""), "2: error: no application privilege can have"},
       {With(", \"authLevel\": 0"), "2: warning: authLevel 0: everybody may call"},
       {With(", \"authLevel\": 2"), "2: warning: authLevel 2: a failed permission check"},
       {With(", \"authLevel\": \"0\""), "2: error: authLevel must be 0, 1 or 2"},
       {With(", \"allowUser\": \"admin.local\""), "2: error: allowUser must be a list"},
       {With(", \"allowUser\": []"), "2: warning: allowUser is empty"},
       {With(", \"allowUser\": [\"admin.locl\"]"),
        "2: error: there is no user class \"admin.locl\"; did you mean \"admin.local\"?"},
       // Versions.
       {Versions("\"1\": [\"m\"]", "\"minVersion\": 1,\n\"maxVersion\": 3, "),
        "3: warning: there is no list of methods for versions 2 to 3"},
       {Versions("", "\"minVersion\": 3,\n\"maxVersion\": 1, "), "3: error: maxVersion lies below"},
       {Versions("", "\"minVersion\": -1, \"maxVersion\": 0, "),
        "2: error: no version of this range"},
       {Versions("\"1\": [\"m\"]", "\"minVersion\": 1,\"maxVersion\": 4294967296, "),
        "2: warning: there is no list of methods for versions 2 to 2147483647"},
       {Versions("\"1\": [\"m\"],\n\"2\": [\"m\"]"), "4: error: version 2 lies outside"},
       {Versions("\"1\": [\"m\"], \"01\": [\"m\"]"), "3: error: \"01\" is no version"},
       {Versions("\"1\": []"), "3: warning: version 1 has no methods"},
       // Methods.
       {List("5"), "4: error: a method must be a name"},
       {List("\"m\",\n{\"m\": {}}"), "5: error: the method \"m\" is listed a second time"},
       {List("{\"b\": {}, \"a\": {}}"), "4: error: an object must have one method; of this one"},
       {List("{\"m\": true}"), "4: error: the attributes of a method must be an object"},
       {List("{\"m\": {\n\"allowUplod\": true}}"),
        "5: warning: the system knows no attribute \"allowUplod\"; did you mean \"allowUpload\"?"},
       {List("{\"m\": {\"allowDemo\": \"false\"}}"),
        "4: error: \"allowDemo\" must be true or false; this counts as true"},
       {List("{\"m\": {\"deferUpload\": true}}"), "4: warning: deferUpload has no effect"},
       {List("{\"m\": {\"allowUser\": \"admin.local\"}}"), "4: error: allowUser must be a list"},
       // Where it stands.
       {Api(kLib + kRange + kMethods, "ORBO.U"),
        "1: error: the loader does not look for ORBO.U in this file, but in ORBO.U.lib\n"},
       {Api(kLib + kRange + kMethods, "../x"), "1: error: no call can name the API \"../x\""}});
}

TEST_F(Check, NamesEachFaultOfTheDefaults) {
  CheckSamples("lib.def",
               {{"{\"priority\": -10, \"methods\": {\"allowDemo\": true}}", ""},
                {"{\n\"priority\": 11}", "2: error: \"priority\" must be"},
                {"{\"methods\": []}", "1: error: \"methods\" must be an object"},
                {"{\"methods\": {\n\"allowDemo\": 1}}", "2: error: \"allowDemo\" must be"},
                {"{\"prioriti\": 1}", "1: warning: the system reads no default"}});
}

TEST_F(Check, SeesADirectoryAsTheLoaderDoes) {
  EXPECT_EQ(Directory(),
            ": error: cannot be reached: No such file or directory\n"
            "0 files, 0 APIs, 0 libraries: 1 error, 0 warnings\n");
  Write(
      directory_ + "ORBO.T.lib",
      "{\"ORBO.T\": {" + kLib + kRange + kMethods + "},\n\"ORBO.T.A.B\": {" + kLib + kRange +
          "\"authLevel\": 0,\n\"appPriv\": \"p\", \"allowUser\": 5,\n\"methods\": {\"1\": [{\"m\": "
          "{\"allowUser\": []}}]}}}");
  Write(directory_ + "ORBO.T.A.lib", "{}");
  Write(directory_ + "ORBO.Entry.lib",
        Api(kLib + kRange + "\"methods\": {\"1\": [\"other\"]}", "ORBO.Entry.Request"));
  EXPECT_EQ(Directory("--no-libraries"),
            "ORBO.Entry.lib:2: error: the system serves no method \"other\" of this API\n"
            "ORBO.T.lib:1: warning: there is no allowUser, here or in lib.def: nobody may call\n"
            "ORBO.T.lib:2: error: ORBO.T.A.lib hides this: the loader looks for ORBO.T.A.B there "
            "alone\n"
            "ORBO.T.lib:2: warning: authLevel 0: everybody may call this, without logging in\n"
            "ORBO.T.lib:3: warning: allowUser has no effect with authLevel 0\n"
            "ORBO.T.lib:3: warning: appPriv has no effect with authLevel 0\n"
            "ORBO.T.lib:4: warning: allowUser has no effect with authLevel 0\n"
            "lib.def: warning: there are no defaults: nobody may call an API without an allowUser "
            "of its own\n"
            "3 files, 3 APIs, 0 libraries: 2 errors, 6 warnings\n");
}

TEST_F(Check, TellsWhoMayChangeFiles) {
  Write(directory_ + "lib.def", "{}");
  Write(directory_ + "ORBO.T.lib", With(""));
  ASSERT_EQ(chmod((root() + "/" + directory_ + "lib.def").c_str(), 0666), 0);
  EXPECT_THAT(Directory(), HasSubstr("lib.def: error: everybody may write here"));
  ASSERT_EQ(chmod((root() + "/usr").c_str(), 01777), 0);
  EXPECT_THAT(Directory(), Not(HasSubstr("/usr: ")));
  ASSERT_EQ(chmod((root() + "/usr").c_str(), 0777), 0);
  EXPECT_THAT(Directory(), HasSubstr("/usr: error: everybody may write here"));
  // Who may change a link decides what it leads to.
  ASSERT_EQ(chmod((root() + "/usr").c_str(), 0755), 0);
  fs::create_directory(root() + "/vendor");
  fs::create_symlink("../usr", root() + "/vendor/now");
  ASSERT_EQ(chmod((root() + "/vendor").c_str(), 0777), 0);
  Write(directory_ + "ORBO.T.lib",
        Api("\"lib\": \"" + root() + "/vendor/now/x.so\"," + kRange + kMethods));
  EXPECT_THAT(Directory(), HasSubstr("/vendor: error: everybody may write here"));
}

TEST_F(Check, KnowsTheSystemThatItRunsOn) {
  Write("etc/orbo/platform.conf", "service_user=nobody\n");
  Write(directory_ + "lib.def", "{}");
  Write(directory_ + "ORBO.T.lib", With(",\n\"appPriv\": \"p\""));
  ASSERT_EQ(chmod(root().c_str(), 0755), 0);
  ASSERT_EQ(chmod((root() + "/" + directory_ + "lib.def").c_str(), 0600), 0);
  const std::string findings = Directory("--no-libraries");
  EXPECT_THAT(findings, HasSubstr("ORBO.T.lib:3: warning: there is no " + root() +
                                  "/etc/orbo/privileges/p: nobody holds the privilege"));
  EXPECT_EQ(geteuid() == 0, findings.find("lib.def: error: the CGI programs, which run as nobody, "
                                          "cannot read this file") != std::string::npos);
  EXPECT_THAT(findings, Not(HasSubstr("ORBO.T.lib: error")));
  Write("etc/orbo/privileges/p", "");
  EXPECT_THAT(Directory("--no-libraries"), Not(HasSubstr("nobody holds")));
}

TEST_F(Check, EndsByWhatItFinds) {
  Write("ORBO.T.lib", With(", \"authLevel\": 0"));
  EXPECT_EQ(Run("check --no-libraries ORBO.T.lib").exit_code, 0);
  EXPECT_EQ(Run("check --no-libraries --strict ORBO.T.lib").exit_code, 1);
  EXPECT_EQ(Document("check --no-libraries ORBO.T.lib --json")[0]["line"], 2);
  EXPECT_EQ(Run("check ORBO.None.lib").output,
            "ORBO.None.lib: error: cannot be read: No such file or directory\n"
            "1 file, 0 APIs, 0 libraries: 1 error, 0 warnings\n");
  EXPECT_THAT(Run("check /dev/null").output, HasSubstr("cannot be read: it is no regular file"));
}

// --- Handler libraries ---

class CheckLibrary : public Check {
 protected:
  // Describes ORBO.T, served by `library`, which is a module of the tests or a name.
  std::string Findings(const std::string& library, const std::string& methods,
                       const std::string& options = "", const std::string& variables = "") const {
    const std::string module = std::string(TOOLS_MODULES) + "/" + library + ".so";
    fs::create_directories(root() + "/" + directory_);
    if (fs::exists(module)) {
      fs::copy_file(module, root() + "/" + directory_ + library + ".so",
                    fs::copy_options::overwrite_existing);
    }
    Write(directory_ + "lib.def", "{}");
    Write(directory_ + "ORBO.T.lib",
          Api("\"lib\":\"" + (fs::exists(module) ? "./" + library + ".so" : library) + "\"," +
              kRange + "\"allowUser\": [\"admin.local\"], \"methods\": {\n\"1\": [" + methods +
              "]}"));
    return Run("check " + options, "", "env " + variables + TOOLS_COMMAND).output;
  }
};

TEST_F(CheckLibrary, TablesAreComparedWithTheDescription) {
  const std::string findings = Findings("broken", "\"m\", \"none\",\n\"empty\"], \"2\": [\"m\"");
  const std::string table = "the table of ./broken.so has ";
  for (const std::string& expected :
       {"3: error: " + table + "no handler for ORBO.T 1 none\n",
        "4: error: " + table + "no handler for ORBO.T 1 empty\n",
        "2: warning: " + table + "ORBO.T 1 m twice",
        "2: warning: " + table + "ORBO.Else 1 m, which",
        "2: warning: " + table + "ORBO.T 1 hidden, which is not described",
        "2: warning: " + table + "ORBO.T 2 m, which is not described",
        std::string("2: warning: the check table of ./broken.so has ORBO.T 1 gone"),
        std::string("2: error: a call of what is missing ends the process: ./broken.so: undefined "
                    "symbol: _Z14DefinedNowhere")}) {
    EXPECT_THAT(findings, HasSubstr("ORBO.T.lib:" + expected));
  }
  EXPECT_THAT(findings, HasSubstr("\n2 files, 1 API, 1 library: 4 errors, 5 warnings\n"));
  // Other descriptions may know more of the table's rows.
  const std::string file = root() + "/" + directory_ + "ORBO.T.lib";
  EXPECT_THAT(Run("check " + file).output, Not(HasSubstr("ORBO.Else")));
}

TEST_F(CheckLibrary, NoneHarmsTheCommand) {
  const struct {
    const char* library;
    const char* fault;  // how the module misbehaves
    const char* finding;
  } rows[] = {
      {"broken", "crash", "the library crashed while it was opened: Aborted"},
      {"broken", "exit", "the library ended the process while it was opened, with status 3"},
      {"broken", "hang", "the library took more than 1 s while it was opened"},
      {"null_table", "", "GetAPITable gives no table"},
      {"half_made", "", "the library cannot be opened: on purpose"},
      {"libc.so.6", "", "the library has no GetAPITable"},
      {"./none.so", "", "the library cannot be opened: ./none.so: cannot open shared object"},
      {"lib.def", "", "the library cannot be opened: lib.def: "},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.finding);
    const std::string findings = Findings(row.library, "\"m\"", "--seconds 1",
                                          std::string("TEST_MODULE_FAULT=") + row.fault + " ");
    EXPECT_THAT(findings, HasSubstr(std::string("ORBO.T.lib:2: error: ") + row.finding));
    const bool is_bare_file = row.library == std::string("lib.def");
    EXPECT_EQ(is_bare_file, findings.find("; a name without \"/\"") != std::string::npos);
  }
}

TEST_F(CheckLibrary, RootOpensNoneThatOthersMayChange) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "needs root";
  }
  ASSERT_NE(Findings("null_table", "\"m\"").find("GetAPITable"), std::string::npos);
  ASSERT_EQ(chmod((root() + "/" + directory_ + "null_table.so").c_str(), 0757), 0);
  const std::string findings = Run("check").output;
  EXPECT_THAT(findings, HasSubstr("null_table.so: error: everybody may write here"));
  EXPECT_THAT(findings, HasSubstr("ORBO.T.lib:2: warning: the library is not opened"));
  EXPECT_THAT(findings, Not(HasSubstr("GetAPITable")));
}

#ifdef TOOLS_STAGE
TEST_F(Check, WhatIsShippedHasNoErrors) {
  fs::create_directories(root() + "/" + directory_);
  fs::copy(TOOLS_STAGE, root() + "/" + directory_, fs::copy_options::recursive);
  std::istringstream findings(Output("check"));
  for (std::string line; std::getline(findings, line);) {
    EXPECT_THAT(line, ::testing::AnyOf(HasSubstr(" warning: authLevel "),
                                       HasSubstr(" libraries: 0 errors")));
  }
}
#endif

}  // namespace
}  // namespace tools
