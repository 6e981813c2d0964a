# Writes a C++ source with the bytes of files: cmake -DOUTPUT=... -DFILES="|Name=path|Name=path" -P EmbedFiles.cmake
cmake_minimum_required(VERSION 3.25)
set(source "// Made by the build from the files that it names.\n#include \"Host/Report/PageFiles.h\"\n\nnamespace\n{\n")
set(functions "")
string(REPLACE "|" ";" FILES "${FILES}")
list(REMOVE_ITEM FILES "")
foreach(entry IN LISTS FILES)
    string(REGEX MATCH "^([A-Za-z]+)=(.*)$" entry "${entry}")
    set(name ${CMAKE_MATCH_1})
    file(READ ${CMAKE_MATCH_2} bytes HEX)
    # "sourceMappingURL=" and all behind it, but for the end of a comment of CSS.
    string(REGEX REPLACE "736f757263654d617070696e6755524c3d[0-9a-f]*$" "" cut "${bytes}")
    if(NOT cut STREQUAL bytes)
        string(APPEND cut "202a2f0a") # closes a comment of CSS, and means nothing in one of a script's lines
    endif()
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," cut "${cut}")
    string(APPEND source "\nconstexpr unsigned char bytes_${name}[] = {\n${cut}};\n")
    string(APPEND functions "std::string_view PageFiles::${name}()\n{\n"
        "    return {reinterpret_cast<const char*>(bytes_${name}), sizeof bytes_${name}};\n}\n\n")
endforeach()
file(WRITE ${OUTPUT} "${source}\n} // namespace\n\n${functions}")
