"""Shared support of the Python module's tests: the photograph, pictures read
and written with OpenImageIO's Python module, and renders of the real
`lumenveil` tool with the values a test gives the module."""
import os
import subprocess

import numpy as np
import OpenImageIO as oiio
import pytest

TOOL = os.environ["LUMENVEIL_TOOL"]
PHOTO = os.environ["LUMENVEIL_PHOTO"]
FORMATS = {np.uint8: "uint8", np.uint16: "uint16", np.float32: "float"}


def read_picture(path, dtype):
    """H x W x C samples of a picture as stored (alpha not multiplied in)."""
    config = oiio.ImageSpec()
    config.attribute("oiio:UnassociatedAlpha", 1)
    picture = oiio.ImageInput.open(str(path), config)
    assert picture, oiio.geterror()
    pixels = picture.read_image(FORMATS[np.dtype(dtype).type])
    picture.close()
    return pixels.reshape(pixels.shape[0], pixels.shape[1], -1)


def write_picture(path, array):
    layers = array if array.ndim == 3 else array[:, :, None]
    layout = oiio.ImageSpec(layers.shape[1], layers.shape[0], layers.shape[2], FORMATS[array.dtype.type])
    layout.attribute("oiio:UnassociatedAlpha", 1)
    layout.attribute("compression", "none")
    out = oiio.ImageOutput.create(str(path))
    assert out.open(str(path), layout) and out.write_image(np.ascontiguousarray(layers)) and out.close()


def tool_options(values):
    """The tool's options for keyword values: the same names with dashes,
    switches as --name / --no-name, a pair as X,Y."""
    options = []
    for name, value in values.items():
        option = "--" + name.replace("_", "-")
        if isinstance(value, bool):
            options.append(option if value else "--no-" + name.replace("_", "-"))
        elif isinstance(value, tuple):
            options += [option, ",".join(map(str, value))]
        else:
            options += [option, str(value)]
    return options


@pytest.fixture
def tool(tmp_path):
    """tool(image, aperture=None, psf=False, **values): the tool's render of
    `image`, written as a TIFF of its depth, with the values as options; with
    psf, the point-spread picture it wrote too, in floats of 0 to 1."""
    def render(image, aperture=None, psf=False, preset=None, **values):
        source, result = tmp_path / "in.tif", tmp_path / "out.tif"
        write_picture(source, image)
        options = tool_options(values)
        if aperture is not None:
            write_picture(tmp_path / "spread.tif", aperture)
            options += ["--spread", str(tmp_path / "spread.tif")]
        if psf:
            options += ["--psf", str(tmp_path / "psf.tif")]
        if preset:
            options += ["--preset", str(preset)]
        run = subprocess.run([TOOL, "render", "-q", str(source), "-o", str(result)] + options,
                             capture_output=True, text=True)
        assert run.returncode == 0, run.stderr
        picture = read_picture(result, image.dtype)
        picture = picture[:, :, 0] if image.ndim == 2 else picture
        return (picture, read_picture(tmp_path / "psf.tif", np.uint8)[:, :, 0] / 255.0) if psf else picture
    return render


@pytest.fixture(scope="session")
def photo():
    """The photograph, 592 x 400 RGB, 8-bit."""
    return read_picture(PHOTO, np.uint8)


@pytest.fixture(scope="session")
def photo16(photo):
    """The photograph in 16 bits, its low byte a ramp, so that every bit counts."""
    ramp = np.arange(photo.shape[1], dtype=np.uint32) % 256
    return (photo.astype(np.uint32) * 256 + ramp[None, :, None]).astype(np.uint16)
