"""Arrays in and out: dtype and shape kept, any strides taken, the input
never written to, float samples above 1 kept in scene-linear renders."""
import numpy as np
import pytest

import lumenveil


@pytest.mark.parametrize("dtype", [np.uint8, np.uint16, np.float32])
@pytest.mark.parametrize("channels", [None, 1, 2, 3, 4])
def test_dtype_and_shape_are_kept(photo, dtype, channels):
    grey = photo[:64, :96, 0]
    image = grey if channels is None else np.stack([grey] * channels, axis=2)
    image = (image / 255.0).astype(dtype) if dtype == np.float32 else (image.astype(dtype) * (257 if dtype == np.uint16 else 1))
    result = lumenveil.defocus(image, radius_x=0.05)
    assert result.shape == image.shape and result.dtype == image.dtype
    assert result.flags.c_contiguous and result.flags.owndata


def test_strided_views_give_the_pictures_of_contiguous_copies(photo, photo16):
    for image in (photo, photo16):
        for view in (np.asfortranarray(image), image[7:390:2, 5:580:3], image[::-1], image[:, ::-1],
                     image[..., ::-1], image[:, :, 1]):
            kept = view.copy()
            expected = lumenveil.defocus(np.ascontiguousarray(view), radius_x=0.02)
            assert np.array_equal(lumenveil.defocus(view, radius_x=0.02), expected)
            assert np.array_equal(view, kept)
    read_only = photo.copy()
    read_only.flags.writeable = False
    assert np.array_equal(lumenveil.defocus(read_only), lumenveil.defocus(photo))


def test_scene_linear_floats_keep_light_above_one():
    # A flat field stays flat under any blur (edges are repeated), so light
    # of 4.0 comes back as 4.0 in scene-linear light, and limited to 1.0 else.
    field = np.full((48, 64, 3), 4.0, dtype=np.float32)
    assert np.allclose(lumenveil.defocus(field, linear=True, bright_emphasis=1.0), 4.0, rtol=1e-4)
    assert np.allclose(lumenveil.defocus(field, bright_emphasis=1.0), 1.0, rtol=1e-4)
