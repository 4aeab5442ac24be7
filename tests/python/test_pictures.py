"""Pictures of the module equal the real tool's renders of the same pictures
with the same values and engine, byte for byte."""
import numpy as np
import pytest

import lumenveil

POLYGON = dict(shape="polygon", sides=6, rotation=15.0, radius_x=0.02, bright_emphasis=80.0, pixel_aspect=1.5)
IMAGE = dict(shape="image", centre=(0.3, 0.6), radius_psf1=0.02, radius_psf2=0.04)


def checkers(like):
    """An aperture picture: squares of 6 pixels, full and empty, in the image's dtype."""
    y, x = np.indices(like.shape[:2])
    full = 1.0 if like.dtype == np.float32 else np.iinfo(like.dtype).max
    return (((x // 6 + y // 6) % 2) * full).astype(like.dtype)


@pytest.mark.parametrize("depth", ["photo", "photo16"])
@pytest.mark.parametrize("engine, values", [
    ("fast", {}),  # every other value the effect's default
    ("faithful", dict(radius_x=0.015)),
    ("fast", POLYGON), ("faithful", POLYGON),
    ("fast", IMAGE), ("faithful", IMAGE),
])
def test_the_photo_equals_the_tools_render(request, tool, depth, engine, values):
    image = request.getfixturevalue(depth)
    aperture = checkers(image) if values is IMAGE else None
    ours = lumenveil.defocus(image, engine=engine, aperture=aperture, **values)
    assert np.array_equal(ours, tool(image, aperture=aperture, engine=engine, **values))
    assert not np.array_equal(ours, image)


def test_grey_rgba_and_float_images_equal_the_tools_render(tool, photo, photo16):
    alpha = np.linspace(0, 65535, photo.shape[1]).astype(np.uint16)[None, :, None].repeat(photo.shape[0], 0)
    for image in (photo[:, :, 1].copy(), np.concatenate([photo16, alpha], axis=2),
                  photo.astype(np.float32) / 255):
        ours = lumenveil.defocus(image, radius_x=0.02)
        assert ours.shape == image.shape and ours.dtype == image.dtype
        assert np.array_equal(ours, tool(image, engine="fast", radius_x=0.02))


def test_scene_linear_light_above_one_equals_the_tools_render(tool, photo):
    # The photo as light up to 40: the brightest tenth of its samples scaled up.
    light = photo.astype(np.float32) / 255
    light[light > 0.9] *= 40
    ours = lumenveil.defocus(light, linear=True, radius_x=0.02)
    assert ours.max() > 1
    assert np.array_equal(ours, tool(light, engine="fast", linear=True, radius_x=0.02))
