// Pages of HTML that need nothing besides themselves.
#pragma once

#include <string>

#include "runtime/text.h"

namespace rdv::lines {

// The text as it is to be seen; what no page may hold is replaced.
void AppendHtml(TextView text, std::string& to);

// The whole page, its style in it, without a script. `title` is plain, `body` is HTML.
std::string HtmlPage(const std::string& title, const std::string& body);

}  // namespace rdv::lines
