# cmake -D PAGE=<html> -D SOURCE=<output> -P embed.cmake: writes a source that holds the bytes of the page.
cmake_minimum_required(VERSION 3.25)
file(READ ${PAGE} bytes HEX)
string(REGEX REPLACE "(................................................................)" "\\1\n" bytes "${bytes}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
file(WRITE ${SOURCE} "#include \"ctl/http/page.h\"

namespace tolvane::ctl::http {

namespace {

constexpr unsigned char kPage[] = {
${bytes}};

}  // namespace

std::string_view page() noexcept {
  return {reinterpret_cast<const char*>(kPage), sizeof kPage};
}

}  // namespace tolvane::ctl::http
")
