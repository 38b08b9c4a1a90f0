// On macOS the locale-taking conversions are declared here; glibc declares them in these.
#pragma once

#include <locale.h>
#include <stdlib.h>
