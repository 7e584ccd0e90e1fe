// SPDX-License-Identifier: MIT
// Surfaces as point clouds.
#pragma once

#include "sdk/pipeline.h"

// Append a surface as an organised binary point cloud of PCD version 0.7 to a stream: x, y and z of
// each cell in mm and, where there are some, intensities from 0 to 1. Invalid points are three
// quiet NaN. Return 1; 0 for a null stream or another kind of message; or the status of the step
// that failed, when the stream holds a part.
zStatus GetPcdFileStream(const Plovia::SurfaceStream& surface, zStream stream);
zStatus GetPcdFileStream(MxMsg message, zStream stream, zAlloc alloc);

// Appends the real coordinates of each cell of a surface message, row by row, to a list of
// zPoint3d32f, which is made when the handle is empty. Throws Orv::Exception without a text: -996
// for another message, -984 for a list of another type, or a failing status of the list.
void GetAllPointsPcd(MxMsg message, Orv::Object<void*>& list, zAlloc alloc);
