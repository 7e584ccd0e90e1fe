// SPDX-License-Identifier: MIT
#include "commandargsoperator/commandargsoperator.h"
#include "console.h"

namespace {

constexpr std::string_view kUsage =
    R"(Usage:
    Trelvane.exe -i <inputFile> [options] -o <outputFile>

The following conversions are supported at the moment: 
        .ovrec <-----> .srf/.sur/.pcd         (Valid for the surface input data)
        .ovrec <-----> .pro                   (Valid for the profile recording input data)
        .ovrec  -----> .csv                   (Valid for the profile/surface recording input data)

You may use the following options:
        --help:              Show the instructions for use
     -i/--input <input>:     Specify the file name of the input file (mandatory)
     -f/--frame <n>:         Specify the index of the exported frame in the recording data (Default is 0)
     -w/--width <width>:     Specify the width of the exported surface (Only valid for the pcd file importing)
     -h/--height <height>:   Specify the height of the exported surface (Only valid for the pcd file importing)
     -s/--swap <swap>:       Whether to swap the x and z coordinates (Only valid for the pcd file importing)
     -z/--zoom <zoom>:       Specify the zooming factor of the exported surface (Only valid for the pcd file importing)
     -r/--remove <point>:    Remove the specific point (Only valid for the pcd file importing)
     -a/--all:               Export all the frames if the import is recording data. Overrides -f, if present.
     -o/--output <output>:   Specify the file name of the output file (mandatory).
                             If the imported file isn't recording data, if the exported file name isn't specified,
                             it will use the imported file name as the exported file name
For example, 'Trelvane.exe -i input_xxx.ovrec -f 0 -o output_xxx.sur'
)";

}  // namespace

void printUsage() { consoleWrite(kUsage); }
