# Run by the build: concatenates the test files SOURCES (paths from ROOT, separated by colons) into OUTPUT. Each keeps its
# line numbers, its name in messages and its own unnamed namespace.
set(text "")
set(number 0)
string(REPLACE ":" ";" sources "${SOURCES}")
foreach(source ${sources})
  math(EXPR number "${number} + 1")
  file(READ ${ROOT}/${source} code)
  string(REPLACE "\nnamespace {\n" "\nnamespace file${number} { namespace {\n" code "${code}")
  string(REPLACE "\n}  // namespace\n" "\n}}  // namespace\n" code "${code}")
  string(APPEND text "#line 1 \"${source}\"\n${code}")
endforeach()
file(WRITE ${OUTPUT} "${text}")
