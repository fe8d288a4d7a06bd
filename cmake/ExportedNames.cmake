# Writes the version script that says which names the shared library lets out, by mangled names: all of namespace ormel
# but for its inner namespaces `detail` and `coding`, of which only that is let out which the public headers mention:
# their inline functions and templates call it.
#
# cmake -DARCHIVE=... -DHEADERS=<list in a file> -DSOURCES=<folder> -DNM=... -DABI=... -DOUTPUT=... -P ExportedNames.cmake

execute_process(COMMAND ${NM} --defined-only ${ARCHIVE} OUTPUT_FILE ${OUTPUT}.nm ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(STRINGS ${OUTPUT}.nm symbols REGEX " _Z(T[ISV]|GV)?NK?[RO]?5ormel6(detail|coding)[1-9]")

file(STRINGS ${HEADERS} headers REGEX "^[^#]")
set(words "")
foreach(header IN LISTS headers)
  file(READ ${SOURCES}/${header} text)
  string(REGEX REPLACE "[^A-Za-z0-9_]+" " " text "${text}")
  string(APPEND words " ${text} ")
endforeach()

set(inner "")
foreach(symbol IN LISTS symbols)
  string(REGEX REPLACE "^.*[RKNO]5ormel(6detail|6coding)([1-9][0-9]*)(.*)$" "\\1;\\2;\\3" fields "${symbol}")
  list(LENGTH fields count)
  if(NOT count EQUAL 3)
    continue()
  endif()
  list(GET fields 0 space)
  list(GET fields 1 length)
  list(GET fields 2 rest)
  string(SUBSTRING "${rest}" 0 ${length} name)
  list(APPEND inner "${space}${length}${name}")
endforeach()
list(REMOVE_DUPLICATES inner)
list(SORT inner)

set(text "ORMEL_${ABI} {\n  global:\n")
# "6decode" is as long as the names of the inner namespaces.
foreach(name IN ITEMS "[!6]*" "6[!cd]*" "6decode*")
  string(APPEND text "    _ZN5ormel${name}; _ZNK5ormel${name}; _ZN[RO]5ormel${name}; _ZNK[RO]5ormel${name};\n"
    "    _ZT[ISV]N5ormel${name}; _ZGVN5ormel${name}; _ZThn*_N5ormel${name}; _ZThn*_NK5ormel${name};\n")
endforeach()
foreach(name IN LISTS inner)
  string(REGEX REPLACE "^6(detail|coding)[0-9]+" "" word "${name}")
  string(FIND "${words}" " ${word} " found)
  if(NOT found EQUAL -1)
    string(APPEND text "    _ZN5ormel${name}*; _ZNK5ormel${name}*; _ZT[ISV]N5ormel${name}*; _ZGVN5ormel${name}*;\n"
      "    _ZThn*_N5ormel${name}*; _ZThn*_NK5ormel${name}*;\n")
  endif()
endforeach()
string(APPEND text "  local:\n    *;\n};\n")
file(WRITE ${OUTPUT} "${text}")
file(REMOVE ${OUTPUT}.nm)
