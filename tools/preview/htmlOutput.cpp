#include "htmlOutput.h"
std::string HtmlPage(const std::vector<Preview>&, bool) { return {}; }
