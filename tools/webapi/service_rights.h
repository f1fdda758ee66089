#pragma once

#include <string>

// The rights of the user whom the CGI programs run as, where root runs this command and
// platform.conf names one.
namespace ORBO::tool {

// That user's name; "" where this command is nobody else than who runs it.
std::string ServiceUser();

// Whether what is opened here is opened with root's rights.
bool OpensAsRoot();

// Makes this process that user's, for a child of this command.  Does nothing where there
// is none, and ends the process where it cannot be done.
void TakeServiceRights();

}  // namespace ORBO::tool
