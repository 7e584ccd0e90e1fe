# cmake -DINPUT=<file> -DOUTPUT=<header> -DNAME=<array> -P EmbedBinary.cmake
file(READ ${INPUT} digits HEX)
string(REGEX REPLACE "(................................)" "\\1\n  " digits "${digits}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1, " bytes "${digits}")
file(WRITE ${OUTPUT} "// Generated from a binary file.\n#pragma once\n\n"
                     "inline constexpr unsigned char ${NAME}[] = {\n  ${bytes}\n};\n")
