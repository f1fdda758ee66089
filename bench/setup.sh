# What the measuring programs share: the input, and how a call is started.  To be
# sourced with `source_dir`, `build_dir` and `document` set.

. "$source_dir/bench/build.sh"
require valgrind strace awk cmake
build_release webapi_bench
bench_dir=$(cd "$build_dir/bench" && pwd)

work_dir=$(mktemp -d)
# What lies below /run is in memory, and so it is here where that can be.
run_dir=$(mktemp -d -p /dev/shm 2> /dev/null || mktemp -d)
trap 'rm -rf "$work_dir" "$run_dir"' EXIT
trap 'exit 1' HUP INT TERM

# --- The input: root directory, defaults, descriptions of 20 kB and 200 kB ---

api_dir=$work_dir/root/usr/orbo/orboman/webapi
mkdir -p "$api_dir/handlers"
cp "$bench_dir/bench_entry" "$api_dir/entry.cgi"
cp "$bench_dir/libbench_handler.so" "$api_dir/handlers/"

# describe PREFIX APIS LEVEL: APIs of six methods each; the called one comes last.
describe() {
  awk -v prefix="$1" -v apis="$2" -v level="$3" 'BEGIN {
    print "{"
    for (api = 1; api <= apis; ++api) {
      printf "  \"%s.%s\": {\n", prefix, api < apis ? "Api" api : "Last"
      print "    \"lib\": \"handlers/libbench_handler.so\","
      print "    \"minVersion\": 1,\n    \"maxVersion\": 1,\n    \"authLevel\": " level ","
      print "    \"allowUser\": [\"admin.local\", \"admin.domain\", \"normal.local\"],"
      print "    \"methods\": {\n      \"1\": ["
      for (method = 1; method <= 6; ++method) {
        name = method < 6 ? "method" method : "echo"
        printf "        { \"%s\": { \"allowUpload\": false, \"allowDownload\": false,", name
        print " \"allowDemo\": true, \"allowTimeout\": false"
        for (attribute = 1; attribute <= 9; ++attribute) {
          printf "          , \"attribute%d\": { \"is\": \"text\", \"most\": %d }\n",
            attribute, attribute * 100
        }
        print "        } }" (method < 6 ? "," : "")
      }
      print "      ]\n    }\n  }" (api < apis ? "," : "")
    }
    print "}"
  }'
}
describe ORBO.Small 5 0 > "$api_dir/ORBO.Small.lib"
describe ORBO.Large 50 0 > "$api_dir/ORBO.Large.lib"
describe ORBO.Login 5 1 > "$api_dir/ORBO.Login.lib"
awk 'BEGIN {
  print "{\n  \"priority\": 0,\n  \"authLevel\": 1,\n  \"allowUser\": [\"admin.local\"],"
  print "  \"methods\": {"
  for (attribute = 1; attribute <= 29; ++attribute) {
    printf "    \"allowAttribute%d\": false,\n", attribute
  }
  print "    \"allowUpload\": false\n  }\n}"
}' > "$api_dir/lib.def"

size_of() { stat -c %s "$api_dir/$1"; }
small_size=$(size_of ORBO.Small.lib)
large_size=$(size_of ORBO.Large.lib)

# A session of an account of the system, so that the name service has its say, for
# the measured client's address, with the settings of the sample file.
plain_cookie="HTTP_COOKIE=id=nobody; theme=dark"
mkdir -p "$work_dir/root/etc/orbo" "$run_dir/orbo"
ln -s "$run_dir" "$work_dir/root/run"
mkdir -m 700 "$run_dir/orbo/sessions"
sed 's/^#\([a-z_]*=\)/\1/' "$source_dir/data/platform.conf.sample" |
  grep -v '^service_user=' > "$work_dir/root/etc/orbo/platform.conf"
session=$(WEBAPI_ROOT=$work_dir/root "$build_dir/bin/webapi" session open nobody \
  --address 127.0.0.1)
session_cookie="HTTP_COOKIE=id=$session; theme=dark"

# --- The programs: a label, and how to start it ---

query_of() { echo "QUERY_STRING=api=ORBO.$1.Last&version=1&method=echo&text=hello"; }

# in_server COMMAND...: what a web server gives a CGI program, and nothing else.
in_server() {
  (cd "$api_dir" && exec env -i PATH=/usr/bin:/bin WEBAPI_ROOT="$work_dir/root" \
    GATEWAY_INTERFACE=CGI/1.1 SERVER_PROTOCOL=HTTP/1.1 SERVER_SOFTWARE=bench \
    SERVER_NAME=localhost SERVER_ADDR=127.0.0.1 SERVER_PORT=80 \
    REMOTE_ADDR=127.0.0.1 REMOTE_PORT=40000 REQUEST_METHOD=GET REQUEST_SCHEME=http \
    REQUEST_URI="/webapi/entry.cgi" SCRIPT_NAME=/webapi/entry.cgi \
    SCRIPT_FILENAME="$api_dir/entry.cgi" DOCUMENT_ROOT="$api_dir" \
    HTTP_HOST=localhost HTTP_ACCEPT="*/*" HTTP_ACCEPT_LANGUAGE="en" \
    HTTP_USER_AGENT="Mozilla/5.0 (X11; Linux x86_64; rv:109.0) Gecko/20100101 Firefox/115.0" \
    "$plain_cookie" "$@")
}
