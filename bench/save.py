# SPDX-License-Identifier: MIT
"""save.py <scan.sur> <width> <to>: the heights of a surface as an array file, the way most would."""

import sys

import numpy

heights = numpy.fromfile(sys.argv[1], "<i2", offset=512).reshape(-1, int(sys.argv[2]))
numpy.save(sys.argv[3], numpy.where(heights < -32766, -32768, heights).astype("<i2"))
