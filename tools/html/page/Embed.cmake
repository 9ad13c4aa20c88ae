# Writes the C++ source that holds the page.
#
# cmake -D OUTPUT=Page.cpp -D "SCRIPTS=a.js;b.js" -P Embed.cmake

# Returns the BASE64 text of a SHA-256 hash of `text` in the variable `result`.
function(base64_sha256 text result)
  set(alphabet ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
  string(SHA256 hex "${text}")
  string(APPEND hex 00)  # 33 bytes: 11 groups of 3 bytes, each of which gives 4 digits
  foreach(group RANGE 10)
    math(EXPR at "${group} * 6")
    string(SUBSTRING ${hex} ${at} 6 bytes)
    foreach(shift IN ITEMS 18 12 6 0)
      math(EXPR digit "(0x${bytes} >> ${shift}) & 63")
      string(SUBSTRING ${alphabet} ${digit} 1 digit)
      string(APPEND encoded ${digit})
    endforeach()
  endforeach()
  string(REGEX REPLACE "A$" "=" encoded ${encoded})
  set(${result} ${encoded} PARENT_SCOPE)
endfunction()

set(folder ${CMAKE_CURRENT_LIST_DIR})
file(READ ${folder}/page.html PAGE)
file(READ ${folder}/style.css STYLE)
set(SCRIPT "\"use strict\";\n(() => {\n")
foreach(script IN LISTS SCRIPTS)
  file(READ ${folder}/${script} text)
  string(APPEND SCRIPT "${text}")
endforeach()
string(APPEND SCRIPT "})();\n")
base64_sha256("${STYLE}" STYLE_HASH)
base64_sha256("${SCRIPT}" SCRIPT_HASH)

string(CONFIGURE "${PAGE}" PAGE @ONLY)

# Cut the page at its marks.
foreach(part IN ITEMS BEFORE_TITLE:title BEFORE_MANIFEST:manifest BEFORE_BUFFERS:buffers)
  string(REPLACE ":" ";" part ${part})
  list(GET part 0 name)
  list(GET part 1 mark)
  string(FIND "${PAGE}" "<!--${mark}-->" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "page.html has no <!--${mark}-->")
  endif()
  string(SUBSTRING "${PAGE}" 0 ${at} ${name})
  string(LENGTH "${${name}}<!--${mark}-->" at)
  string(SUBSTRING "${PAGE}" ${at} -1 PAGE)
endforeach()
set(END "${PAGE}")
configure_file(${folder}/Page.cpp.in ${OUTPUT} @ONLY NEWLINE_STYLE LF)
