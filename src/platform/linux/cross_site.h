#pragma once

namespace ORBO {

// Whether a browser says that this request was made by a page of another origin.
// A browser adds its cookies there too, so that the page would act as the user.
//
// It says so by Origin, where that is not the request's own scheme, host and port,
// or by Sec-Fetch-Site, where that is neither "same-origin" nor "none" (the user's
// own doing, as a typed address).  "same-site" counts as another origin: it may be
// any service on another port of this host.  A request with neither header comes
// from no browser of today, or is one that Origin is left out of, such as a link.
bool IsCrossSiteRequest();

}  // namespace ORBO
