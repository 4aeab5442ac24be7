"""Bad input raises TypeError, ValueError or OSError with the effect's own
reason, never writes to the input, and leaves an Effect as it was."""
import os
import subprocess
import sys
import textwrap

import numpy as np
import pytest

import lumenveil

IMAGE = np.full((40, 60, 3), 100, np.uint8)


@pytest.mark.parametrize("error, image, values, reason", [
    (TypeError, IMAGE.astype(np.float64), {}, "dtype float64; uint8, uint16 and float32"),
    (TypeError, IMAGE.astype(np.int32), {}, "dtype int32"),
    (TypeError, IMAGE.tolist(), {}, "must be a NumPy array"),
    (TypeError, IMAGE, dict(radius_width=0.1), "unexpected keyword argument 'radius_width'"),
    (TypeError, IMAGE, dict(radius=0.1, radius_x=0.2), "radius and radius_x are two names of Radius X"),
    (TypeError, IMAGE, dict(radius_x="wide"), "radius_x takes a number, not str"),
    (TypeError, IMAGE, dict(centre=0.5), "centre takes a pair"),
    (TypeError, IMAGE, dict(aperture=IMAGE > 0), "aperture has dtype bool"),
    (ValueError, IMAGE[:, :, :1].repeat(5, axis=2), {}, "has shape (40, 60, 5)"),
    (ValueError, IMAGE[0, 0], dict(), "has shape (3,)"),
    (ValueError, IMAGE[:0], dict(), "the input frame is 60 x 0"),
    (ValueError, IMAGE, dict(radius_x=0.5), "radius_x: 0.5 is outside 0 to 0.3"),
    (ValueError, IMAGE, dict(sides=6.5), "sides: \"6.5\" is not a whole number"),
    (ValueError, IMAGE, dict(shape="hexagon"), "circle|ellipse|polygon|image"),
    (ValueError, IMAGE, dict(centre=(0.5, 2)), "centre y: 2 is outside 0 to 1"),
    (ValueError, IMAGE, dict(pixel_aspect=0), "pixel_aspect: 0 is not a number above 0"),
    (ValueError, IMAGE, dict(shape="image", aperture=IMAGE[:20]), "is 60 x 20 but the frame is 60 x 40"),
    (OSError, IMAGE, dict(preset="no-such-preset.json"), "No such file or directory: 'no-such-preset.json'"),
])
def test_bad_input_raises_with_its_reason(error, image, values, reason):
    kept = np.array(image, copy=True)
    with pytest.raises(error) as raised:
        lumenveil.defocus(image, **values)
    assert reason in str(raised.value)
    assert np.array_equal(np.asarray(image), kept)


def test_a_refused_value_or_preset_leaves_the_effect_as_it_was(tmp_path):
    fx = lumenveil.Effect(shape="polygon", radius_x=0.04)
    (tmp_path / "bad.json").write_text('{"values": [1, 2')
    with pytest.raises(ValueError, match="bad.json refused"):
        fx.load_preset(tmp_path / "bad.json")
    with pytest.raises(ValueError, match="sides: 30 is outside 3 to 20"):
        fx.set(radius_x=0.01, sides=30)
    with pytest.raises(OSError):
        fx.save_preset(tmp_path / "no-such-folder" / "kept.json")
    with pytest.raises(ValueError, match="Match Radii cannot be animated"):
        fx.set_key("match_radii", 1.0, False)
    assert (fx.get("shape"), fx.get("radius_x"), fx.get("sides")) == ("polygon", 0.04, 6)
    assert list(tmp_path.iterdir()) == [tmp_path / "bad.json"]


@pytest.mark.skipif("asan" in os.environ.get("LD_PRELOAD", ""),
                    reason="an address-space limit cannot be set under the address sanitizer")
def test_a_frame_the_engine_cannot_allocate_for_raises_memory_error():
    # A 7000 x 2 frame takes the faithful engine's square transform of 8192,
    # 512 MiB a plane: beyond an address space of 2.5 GB. Run apart, so the
    # limit binds that process alone.
    script = textwrap.dedent("""
        import resource, sys
        import numpy as np
        import lumenveil
        image = np.full((2, 7000, 3), 100, np.uint8)
        resource.setrlimit(resource.RLIMIT_AS, (2_500_000_000, 2_500_000_000))
        try:
            lumenveil.defocus(image, engine="faithful")
        except MemoryError as e:
            print("MemoryError:", e)
        sys.exit(0)
    """)
    done = subprocess.run([sys.executable, "-c", script], capture_output=True, text=True, timeout=120)
    assert done.returncode == 0, done.stderr
    assert "MemoryError:" in done.stdout and "could not allocate memory" in done.stdout, done.stdout
