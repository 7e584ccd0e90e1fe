# SPDX-License-Identifier: MIT
"""savetxt.py <heights> <width> <to>: the 16-bit heights of a file as CSV, the way most would."""

import sys

import numpy

heights = numpy.fromfile(sys.argv[1], "<i2").reshape(-1, int(sys.argv[2]))
real = numpy.where(heights == -32768, numpy.nan, heights * 0.001)
numpy.savetxt(sys.argv[3], real, fmt="%.6g", delimiter=",", newline="\r\n")
