// SPDX-License-Identifier: MIT
#include "surfacefileconverter/filetypes.h"

std::map<DataSourceType, std::string> dataSourceTypeNames = {
    {UNIFORM_PROFILE, "UNIFORM_PROFILE"},
    {PROFILE_POINT_CLOUD, "PROFILE_POINT_CLOUD"},
    {UNIFORM_SURFACE, "UNIFORM_SURFACE"},
    {SURFACE_POINT_CLOUD, "SURFACE_POINT_CLOUD"},
};
