# SPDX-License-Identifier: MIT
"""A scan: raw points as the file holds them, and what they are in mm."""

from __future__ import annotations

import ctypes
from typing import TYPE_CHECKING, Any, Literal, NamedTuple, Optional, Sequence, TypeVar, overload

import numpy as np
from numpy.typing import ArrayLike, DTypeLike, NDArray

from . import _library
from ._calls import Handle, call
from ._errors import ArgumentError, NoSuchScanError
from ._library import library
from ._picture import draw

if TYPE_CHECKING:
    import xarray

Kind = Literal["surface", "cloud", "profile", "point profile"]
"""What the points of a scan are: a grid of heights z, a grid of points x, y, z, a row of heights z,
or a row of points x, z."""

Float = TypeVar("Float", np.float32, np.float64)

KINDS: dict[int, Kind] = {1: "surface", 2: "cloud", 3: "profile", 4: "point profile"}
AXES: dict[Kind, int] = {"surface": 1, "cloud": 3, "profile": 1, "point profile": 2}
INVALID = -32768
"""In a raw coordinate: nothing was seen there."""


class XYZ(NamedTuple):
    """A number for each axis."""

    x: float
    y: float
    z: float


class Box(NamedTuple):
    """Centre and size of the valid points, mm."""

    center: XYZ
    size: XYZ


class Stamp(NamedTuple):
    """When and where a scan was taken, in the scanner's own counts."""

    frame: int = 0
    time: int = 0
    encoder: int = 0
    z_encoder: int = 0
    inputs: int = 0
    reserved: tuple[int, int, int] = (0, 0, 0)


class CloudGrid(NamedTuple):
    """How a point cloud is put into a grid; see `open`."""

    width: Optional[int] = None
    height: Optional[int] = None
    swap_xz: bool = False
    remove: Optional[tuple[float, float, float]] = None
    zoom: Optional[float] = None


class Origin(NamedTuple):
    """Where a scan can be read again, in another process too."""

    path: str  # absolute
    frame: int
    source: int
    item: int
    source_name: str
    grid: CloudGrid


class _Lent:
    """Memory of a scan as an array, which keeps the scan's handle as long as it is needed."""

    def __init__(self, handle: Handle, address: int, shape: tuple[int, ...], kind: str) -> None:
        self._handle = handle
        self.__array_interface__ = {"version": 3, "shape": shape, "typestr": kind,
                                    "data": (address, True)}


class Scan:
    """A surface, a profile or a point cloud.

    Made of arrays here, or read by a recording. Its arrays have the shape [row, column], and
    `raw` of points [row, column, axis]; a profile is one row. Row 0 is that of the least y, column
    0 that of the least x, where the scales are positive. They are read-only, and stay valid when
    the recording is closed and when the scan is gone.

    A scan of a recording is pickled by its place, as path, frame, source and item, and read anew
    where it arrives; the checksums of a recording are not verified again.
    """

    units = "mm"
    """Of heights, x, y, scale, offset and box. Files that tell another unit are taken for mm, as
    by Trelvane; trelvane-inspect says when that is so."""

    kind: Kind
    scale: XYZ
    """The raw value v of an axis stands for v * scale + offset, mm. Where the points do not tell
    their x or y, the raw value is the column or the row."""
    offset: XYZ
    """mm."""
    stamp: Optional[Stamp]
    """Of a scan from a recording."""
    resampled: bool
    """The points were put into a regular grid."""

    def __init__(self, raw: ArrayLike, *, scale: Sequence[float],
                 offset: Sequence[float] = (0.0, 0.0, 0.0),
                 intensity: Optional[ArrayLike] = None, kind: Optional[Kind] = None,
                 stamp: Optional[Stamp] = None, resampled: Optional[bool] = None) -> None:
        """Takes a copy of the arrays.

        raw: int16. Of the shape [row, column] a surface, [row, column, 3] a cloud (x, y, z),
            [column] a profile, [row, column, 2] with one row a point profile (x, z). INVALID
            (-32768) in a coordinate makes its point invalid.
        scale, offset: of x, y and z, mm.
        intensity: uint8 [row, column].
        kind: where the shape does not tell it, as of a profile of the shape [1, column].
        """
        points = _as_items(raw, np.int16, "raw")
        kind = kind or _kind_of(points.shape)
        axes = AXES.get(kind)
        if axes is None:
            raise ArgumentError(f"{kind!r} is no kind of scan")
        if points.ndim == 1:
            points = points[np.newaxis]
        shape = points.shape[:2]
        if points.shape != (shape if axes == 1 else (*shape, axes)) or points.ndim < 2:
            raise ArgumentError(f"raw points of the shape {points.shape} are no {kind}")
        info = _library.ScanInfo(
            kind=next(number for number, name in KINDS.items() if name == kind),
            length=shape[0], width=shape[1],
            resampled=kind == "surface" if resampled is None else resampled,
            scale=_three(scale, "scale"), offset=_three(offset, "offset"),
            has_stamp=stamp is not None, stamp=_to_stamp_info(stamp or Stamp()))
        bright = None
        if intensity is not None:
            bright = _as_items(intensity, np.uint8, "intensity")
            if bright.size != shape[0] * shape[1] or bright.shape not in (shape, shape[1:]):
                raise ArgumentError(f"intensities of the shape {bright.shape} do not fit points "
                                    f"of the shape {points.shape}")
        handle = Handle("scan_free")
        call("scan_create", info, points.ctypes.data, points.size,
             None if bright is None else bright.ctypes.data, 0 if bright is None else bright.size,
             handle.pointer)
        self._take(handle, None)

    @classmethod
    def from_heights(cls, heights: ArrayLike, *, step: Sequence[float],
                     origin: Sequence[float] = (0.0, 0.0), resolution: Optional[float] = None,
                     intensity: Optional[ArrayLike] = None) -> Scan:
        """A surface of heights in mm [row, column], NaN where nothing was seen.

        step: distance of columns and of rows, mm.
        origin: x of column 0 and y of row 0, mm.
        resolution: step of the raw heights, mm; as fine as 16 bits allow where it is not given.
        """
        z = np.asarray(heights, np.float64)
        seen = np.isfinite(z)
        low, high = (z[seen].min(), z[seen].max()) if seen.any() else (0.0, 0.0)
        if resolution is None:  # with as many steps as a .sur file can hold
            resolution = float(high - low) / 65530 or 0.001
        middle = low / 2 + high / 2
        raw = np.full(z.shape, INVALID, np.int16)
        values = np.rint((z[seen] - middle) / resolution)
        if values.size and np.abs(values).max() > 32765:
            raise ArgumentError(f"heights from {low:g} to {high:g} mm in steps of "
                                f"{resolution:g} mm need more than 16 bits")
        raw[seen] = values
        return cls(raw, scale=(*step, resolution), offset=(*origin, middle), intensity=intensity)

    @classmethod
    def _read(cls, handle: Handle, origin: Origin) -> Scan:
        scan = cls.__new__(cls)
        scan._take(handle, origin)
        return scan

    def _take(self, handle: Handle, origin: Optional[Origin]) -> None:
        self._handle, self._origin = handle, origin
        info = _library.ScanInfo()
        call("scan_get_info", handle.pointer, info)
        self.kind = KINDS[info.kind]
        self._shape = (int(info.length), int(info.width))
        self.scale, self.offset = XYZ(*info.scale), XYZ(*info.offset)
        self.resampled = bool(info.resampled)
        self.stamp = _from_stamp_info(info.stamp) if info.has_stamp else None
        self._box = (Box(XYZ(*info.box_center), XYZ(*info.box_size)) if info.has_box else None)

    @property
    def shape(self) -> tuple[int, int]:
        """Rows and columns."""
        return self._shape

    @property
    def frame(self) -> Optional[int]:
        """Number of the frame in the recording, from 0."""
        return self._origin.frame if self._origin else None

    @property
    def source(self) -> Optional[str]:
        """Name of the source in the recording, such as "Top"."""
        return self._origin.source_name if self._origin else None

    @property
    def item(self) -> Optional[int]:
        """Number among the scans that an arrayed source has in the frame."""
        return self._origin.item if self._origin else None

    @property
    def path(self) -> Optional[str]:
        """Of the recording, absolute."""
        return self._origin.path if self._origin else None

    @property
    def raw(self) -> NDArray[np.int16]:
        """Raw points, a view: [row, column], or [row, column, axis] with x, y, z of a cloud and
        x, z of a point profile. INVALID (-32768) in a coordinate: nothing was seen."""
        axes = AXES[self.kind]
        shape = self._shape if axes == 1 else (*self._shape, axes)
        return self._lend("scan_points", shape, np.dtype(np.int16))

    @property
    def intensity(self) -> Optional[NDArray[np.uint8]]:
        """Intensities [row, column], a view; None where the scan has none."""
        count = ctypes.c_size_t()
        library.trelvane_scan_intensities(self._handle.pointer, count)
        if count.value == 0:
            return None
        return self._lend("scan_intensities", self._shape, np.dtype(np.uint8))

    def _lend(self, name: str, shape: tuple[int, ...], dtype: np.dtype[Any]) -> NDArray[Any]:
        count = ctypes.c_size_t()
        address = getattr(library, "trelvane_" + name)(self._handle.pointer, count)
        if count.value == 0:
            return np.zeros(shape, dtype)
        return np.asarray(_Lent(self._handle, address, shape, dtype.str))

    @property
    def mask(self) -> NDArray[np.bool_]:
        """True where a point is valid [row, column], so that heights()[mask] are those that were
        seen. (A mask of numpy.ma is the opposite: ~mask.) Computed anew each time."""
        seen: NDArray[np.bool_] = self.raw != INVALID
        return seen if seen.ndim == 2 else np.asarray(np.all(seen, axis=2), np.bool_)

    @overload
    def heights(self, dtype: None = None, out: None = None) -> NDArray[np.float32]: ...
    @overload
    def heights(self, dtype: type[Float], out: Optional[NDArray[Float]] = None
                ) -> NDArray[Float]: ...
    @overload
    def heights(self, dtype: DTypeLike = None, *, out: NDArray[Float]) -> NDArray[Float]: ...
    @overload
    def heights(self, dtype: DTypeLike, out: None = None) -> NDArray[Any]: ...

    def heights(self, dtype: DTypeLike = None, out: Optional[NDArray[Any]] = None) -> NDArray[Any]:
        """z of all points in mm [row, column], NaN where nothing was seen.

        dtype: float32 (which has 7 digits) or float64, the same values before they are rounded.
        out: an array for them, of that shape and type and in C order.
        """
        if dtype is None:
            dtype = np.float32 if out is None else out.dtype
        wanted: np.dtype[Any] = np.dtype(dtype)
        if wanted not in (np.float32, np.float64) or not wanted.isnative:
            raise ArgumentError(f"heights are float32 or float64, not {wanted.str}")
        if out is None:
            out = np.empty(self._shape, wanted)
        elif not isinstance(out, np.ndarray) or out.shape != self._shape or out.dtype != wanted:
            raise ArgumentError(f"out must be an array of the shape {self._shape} and of {wanted}")
        elif not (out.flags.c_contiguous and out.flags.writeable and out.flags.aligned):
            raise ArgumentError("out must be writable, and in C order")
        call(f"scan_heights_f{8 * wanted.itemsize}", self._handle.pointer, out.ctypes.data,
             out.size)
        return out

    @property
    def x(self) -> NDArray[np.float64]:
        """x in mm: [column], or where the points tell it [row, column], NaN where invalid."""
        return self._coordinates(0, self._shape[1])

    @property
    def y(self) -> NDArray[np.float64]:
        """y in mm: [row], or of a cloud [row, column], NaN where invalid. A profile has y 0."""
        return self._coordinates(1, self._shape[0])

    def _coordinates(self, axis: int, count: int) -> NDArray[np.float64]:
        if axis == 1 and "profile" in self.kind:
            return np.zeros(1)
        if self.kind in ("surface", "profile"):
            return np.arange(count) * self.scale[axis] + self.offset[axis]
        real = self.raw[:, :, axis] * self.scale[axis] + self.offset[axis]
        real[~self.mask] = np.nan
        return np.asarray(real)

    @property
    def box(self) -> Optional[Box]:
        """Centre and size of the valid points, mm; None where no point is valid."""
        if self._box is None:
            center, size = (ctypes.c_double * 3)(), (ctypes.c_double * 3)()
            try:
                call("scan_find_box", self._handle.pointer, center, size)
            except NoSuchScanError:
                return None
            self._box = Box(XYZ(*center), XYZ(*size))
        return self._box

    @property
    def meta(self) -> dict[str, Any]:
        """All of it but the arrays."""
        return {"kind": self.kind, "shape": self.shape, "units": self.units, "scale": self.scale,
                "offset": self.offset, "box": self.box, "resampled": self.resampled,
                "stamp": self.stamp, "path": self.path, "frame": self.frame,
                "source": self.source, "item": self.item}

    def to_xarray(self, dtype: DTypeLike = None) -> xarray.DataArray:
        """Heights as an xarray.DataArray with the coordinates x and y in mm, and intensities as
        one more. Dimensions are y and x, and of points row and column. Needs xarray."""
        import xarray

        gridded = self.kind in ("surface", "profile")
        grid = ("y", "x") if gridded else ("row", "column")
        x, y = self.x, self.y
        if not gridded and y.ndim == 1:
            y = np.zeros(self._shape)
        of_mm = {"units": self.units}
        coordinates: dict[str, Any] = {"x": ("x" if gridded else grid, x, of_mm),
                                       "y": ("y" if gridded else grid, y, of_mm)}
        intensity = self.intensity
        if intensity is not None:
            coordinates["intensity"] = (grid, intensity)
        told = {"kind", "units", "path", "frame", "source"}
        attributes = {key: value for key, value in self.meta.items()
                      if key in told and value is not None}
        return xarray.DataArray(self.heights(dtype), coordinates, grid, "height", attributes)

    def _repr_png_(self) -> bytes:
        """A small picture: heights as colours with y upwards, a profile as a line."""
        step = (abs(self.scale.x), abs(self.scale.y)) if self.kind == "surface" else (1.0, 1.0)
        return draw(self.heights(), step)

    def __repr__(self) -> str:
        place = "" if self._origin is None else f", frame {self.frame} of {self.source!r}"
        return f"<trelvane.Scan: {self.kind}, {self._shape[0]} x {self._shape[1]} points{place}>"

    def __reduce__(self) -> tuple[Any, ...]:
        if self._origin is not None:
            from ._recording import read_again

            return read_again, tuple(self._origin)
        return _from_arrays, (self.raw, self.scale, self.offset, self.intensity, self.kind,
                              self.stamp, self.resampled)


def _from_arrays(raw: ArrayLike, scale: XYZ, offset: XYZ, intensity: Optional[ArrayLike],
                 kind: Kind, stamp: Optional[Stamp], resampled: bool) -> Scan:
    return Scan(raw, scale=scale, offset=offset, intensity=intensity, kind=kind, stamp=stamp,
                resampled=resampled)


def _kind_of(shape: tuple[int, ...]) -> Kind:
    if len(shape) == 3 and shape[2] == 3:
        return "cloud"
    if len(shape) == 3:
        return "point profile"
    return "profile" if len(shape) == 1 else "surface"


def _as_items(values: ArrayLike, dtype: type[Any], name: str) -> NDArray[Any]:
    items = np.asarray(values)
    if items.dtype.newbyteorder("=") != dtype:
        raise ArgumentError(f"{name} is {items.dtype}, and must be {np.dtype(dtype)}")
    return np.asarray(items, dtype, order="C")


def _three(values: Sequence[float], name: str) -> Any:
    numbers = tuple(float(value) for value in values)
    if len(numbers) != 3:
        raise ArgumentError(f"{name} has {len(numbers)} numbers, and must have x, y and z")
    return (ctypes.c_double * 3)(*numbers)


def _to_stamp_info(stamp: Stamp) -> _library.StampInfo:
    return _library.StampInfo(*stamp[:5], (ctypes.c_uint64 * 3)(*stamp.reserved))


def _from_stamp_info(info: Any) -> Stamp:
    first, second, third = info.reserved
    return Stamp(info.frame, info.time, info.encoder, info.z_encoder, info.inputs,
                 (first, second, third))
