#include <gtest/gtest.h>
#include <webapi/testing/HandlerTest.h>

namespace {

const std::string kIPv4 = R"("hostname": "nas", "address": "10.1.2.3", )";
const std::string kIPv6 = R"("hostname": "nas", "address": "fd00::2", )";
// The settings, and what the answer has to say: the network or the problems.
const std::pair<std::string, const char*> kRows[] = {
    {kIPv4 + R"("netmask": "255.255.255.128", "gateway": "10.1.2.1", "domain": "example.com.",
               "port": 0, "mtu": 576, "dns": ["::1", "1.1.1.1"])",
     "10.1.2.0/25"},
    {kIPv6 + R"("prefix": 64, "gateway": "fe80::1%eth0", "dns": "::1", "mtu": 1280)", "fd00::/64"},
    {R"("hostname": "nas", "address": "10.0.0.0", "prefix": 31, "gateway": "10.0.0.1")",
     "10.0.0.0/31"},
    {R"("hostname": 5, "domain": "nas", "address": null, "netmask": "255.0.255.0",
        "gateway": "x", "dns": [[1]], "prefix": 0, "port": 65536, "mtu": 9001)",
     "hostname: no host name; domain: no domain; address: no address; netmask: no netmask; "
     "gateway: no address; dns: not up to three addresses; prefix: no number of bits; "
     "port: not 0 to 65535; mtu: not 576 to 9000; "},
    {kIPv4 + R"("dns": ["::", "::", "::", "::"])", "dns: not up to three addresses; "},
    {kIPv4 + R"("port": 1)", "prefix: either this or a netmask; "},
    {kIPv4 + R"("prefix": 24, "netmask": "255.0.0.0")", "prefix: either this or a netmask; "},
    {kIPv4 + R"("prefix": 33)", "prefix: longer than the address; "},
    {kIPv6 + R"("netmask": "255.0.0.0")", "netmask: IPv6 has a prefix; "},
    {R"("hostname": "nas", "address": "10.1.2.255", "prefix": 24, "gateway": "10.1.3.1")",
     "address: no host of the network; gateway: not in the network of the address; "},
    {kIPv4 + R"("prefix": 24, "gateway": "10.1.2.3")", "gateway: the address itself; "},
    {kIPv4 + R"("prefix": 24, "gateway": "10.1.2.0")", "gateway: no host of the network; "},
    {kIPv4 + R"("prefix": 24, "gateway": "fe80::1")",
     "gateway: not in the network of the address; "},
    {kIPv6 + R"("prefix": 64, "mtu": 1279)", "mtu: below 1280 for IPv6; "},
};

TEST(Network, NamesEveryProblem) {
  ORBO::HandlerTest test(WEBAPI_HANDLER_FILES);
  for (const auto& [settings, expected] : kRows) {
    const ORBO::HandlerAnswer answer =
        test.Request("{\"params\": {" + settings + "}}").Call("ORBO.Example.Network", 1, "check");
    std::string text = answer.Data()["network"].asString();
    for (const Json::Value& problem : answer.Errors()) {
      text += problem["parameter"].asString() + ": " + problem["reason"].asString() + "; ";
    }
    EXPECT_EQ(text, expected) << settings << answer.Text();
  }
}

}  // namespace
