// A lending library: parameter checks in a check table, a fallback check for
// every method without a row of its own, HTTP status, and work that is done
// after the answer.

#include <syslog.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>

#include <algorithm>
#include <iterator>
#include <string>

namespace {

using ORBO::APIRequest;
using ORBO::APIResponse;

constexpr char kAPI[] = "ORBO.Example.Library";

constexpr int kErrorBadParameter = 1001;
constexpr int kErrorNoSuchBook = 1002;
constexpr int kErrorPostOnly = 1003;

struct Book {
  int id;
  const char* title;
  const char* author;
};

const Book kBooks[] = {
    {1, "Walden", "Henry David Thoreau"},
    {2, "Middlemarch", "George Eliot"},
    {3, "Persuasion", "Jane Austen"},
    {4, "Kidnapped", "Robert Louis Stevenson"},
};

bool IsOffset(const int& offset) { return offset >= 0; }
bool IsLimit(const int& limit) { return limit >= 1 && limit <= 100; }

const Book* FindBook(int id) {
  const Book* end = std::end(kBooks);
  const Book* book =
      std::find_if(std::begin(kBooks), end, [id](const Book& row) { return row.id == id; });
  return book == end ? nullptr : book;
}

Json::Value ToJson(const Book& book) {
  Json::Value value(Json::objectValue);
  value["id"] = book.id;
  value["title"] = book.title;
  value["author"] = book.author;
  return value;
}

// --- Checks: false ends the call, with the error that the check has set ---

bool RefuseParameter(APIResponse* response, const char* name) {
  Json::Value errors(Json::objectValue);
  errors["parameter"] = name;
  response->SetError(kErrorBadParameter, errors);
  return false;
}

bool CheckRange(APIRequest* request, APIResponse* response) {
  if (request->GetAndCheckInt("offset", APIRequest::PARAM_OPTIONAL, IsOffset).IsInvalid()) {
    return RefuseParameter(response, "offset");
  }
  if (request->GetAndCheckInt("limit", APIRequest::PARAM_OPTIONAL, IsLimit).IsInvalid()) {
    return RefuseParameter(response, "limit");
  }
  return true;
}

bool CheckBook(APIRequest* request, APIResponse* response) {
  auto id = request->GetAndCheckInt("id", APIRequest::PARAM_REQUIRED);
  if (id.IsInvalid() || id.IsReset()) {
    return RefuseParameter(response, "id");
  }
  if (FindBook(id.Get()) == nullptr) {
    response->SetStatus(ORBO::HTTP_STATUS_NOT_FOUND);
    response->SetError(kErrorNoSuchBook);
    return false;
  }
  return true;
}

// The methods that only read have rows of their own; whatever is added later
// changes something until it gets one.
bool CheckPost(APIRequest* request, APIResponse* response) {
  if (request->GetRequestMethod() != APIRequest::METHOD_POST) {
    response->SetStatus(ORBO::HTTP_STATUS_METHOD_NOT_ALLOWED);
    response->SetHeader("Allow", "POST");
    response->SetError(kErrorPostOnly);
    return false;
  }
  return CheckBook(request, response);
}

// --- Methods: the checks have passed ---

void List(APIRequest* request, APIResponse* response) {
  const int count = static_cast<int>(std::size(kBooks));
  const int offset = request->GetAndCheckInt("offset", APIRequest::PARAM_OPTIONAL).Get(0);
  const int limit = request->GetAndCheckInt("limit", APIRequest::PARAM_OPTIONAL).Get(2);
  const int first = std::min(offset, count);
  Json::Value data(Json::objectValue);
  data["total"] = count;
  data["books"] = Json::Value(Json::arrayValue);
  for (int i = first; i < first + std::min(limit, count - first); ++i) {
    data["books"].append(ToJson(kBooks[i]));
  }
  response->SetSuccess(data);
}

void Get(APIRequest* request, APIResponse* response) {
  response->SetSuccess(
      ToJson(*FindBook(request->GetAndCheckInt("id", APIRequest::PARAM_REQUIRED).Get())));
}

// Runs in a process of its own once the client has its answer; what it needs
// must therefore outlive the handler, as a table row does.
void NoteLending(void* argument) {
  const Book* book = static_cast<const Book*>(argument);
  syslog(LOG_INFO, "book %d (%s) lent", book->id, book->title);
}

void Lend(APIRequest* request, APIResponse* response) {
  const Book* book = FindBook(request->GetAndCheckInt("id", APIRequest::PARAM_REQUIRED).Get());
  response->SetCallbackFunc(NoteLending, const_cast<Book*>(book));
  response->SetStatus(ORBO::HTTP_STATUS_ACCEPTED);
  response->SetSuccess(ToJson(*book));
}

ORBO::_tag_API_TABLE methods[] = {
    {kAPI, 1, "list", List},
    {kAPI, 1, "get", Get},
    {kAPI, 1, "lend", Lend},
    {nullptr, 0, nullptr, nullptr},
};

ORBO::_tag_API_CHECK_TABLE checks[] = {
    {kAPI, 1, "list", CheckRange, nullptr, nullptr},
    {kAPI, 1, "get", CheckBook, nullptr, nullptr},
    // The last row's check stands in for every method without a row.
    {nullptr, 0, nullptr, CheckPost, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
ORBO::_tag_API_CHECK_TABLE* GetAPICheckTable() { return checks; }
