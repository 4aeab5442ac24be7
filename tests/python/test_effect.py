"""An Effect for a sequence: keys, presets the tool takes, the point-spread
picture, the parameter list, and renders on several threads at once."""
import inspect
import threading
import time

import numpy as np

import lumenveil


def test_keys_are_interpolated_linearly_and_held_outside(photo):
    fx = lumenveil.Effect(radius_x=0.03)
    fx.set_key("radius_x", 0.0, 0.01)
    fx.set_key("radius_x", 1.0, 0.05)
    assert abs(fx.get("radius_x", 0.25) - (0.01 + 0.25 * (0.05 - 0.01))) < 1e-12
    assert np.array_equal(fx(photo, time=0.25), lumenveil.defocus(photo, radius_x=0.01 + 0.25 * (0.05 - 0.01)))
    assert np.array_equal(fx(photo, time=3.0), lumenveil.defocus(photo, radius_x=0.05))
    assert np.array_equal(fx(photo), lumenveil.defocus(photo, radius_x=0.01))


def test_a_saved_preset_renders_the_same_in_the_tool(tmp_path, tool, photo):
    fx = lumenveil.Effect(shape="polygon", sides=5, radius_x=0.03, bright_emphasis=70, emphasise_alpha=True)
    fx.save_preset(tmp_path / "five.json")
    ours = fx(photo)
    assert np.array_equal(ours, tool(photo, preset=tmp_path / "five.json"))
    assert np.array_equal(ours, lumenveil.defocus(photo, preset=str(tmp_path / "five.json")))
    again = lumenveil.Effect()
    again.load_preset(tmp_path / "five.json")
    assert again.get("shape") == "polygon" and again.get("sides") == 5 and again.get("emphasise_alpha") is True


def test_the_point_spread_picture_is_the_disc_of_the_radius(tool):
    # Radius 0.1 of a 200-wide frame is 10 pixels, around the frame's middle.
    picture = lumenveil.Effect(radius_x=0.1).psf(200, 120)
    y, x = np.indices(picture.shape)
    distance = np.hypot(x + 0.5 - 100, y + 0.5 - 60)
    assert picture.dtype == np.float32 and picture.shape == (120, 200)
    assert np.all(picture[distance < 9] == 1.0) and np.all(picture[distance > 11] == 0.0)
    _, tools = tool(np.zeros((120, 200, 3), np.uint8), psf=True, engine="fast", radius_x=0.1)
    assert np.array_equal(picture, tools.astype(np.float32))


def test_parameters_are_the_effects_own():
    listed = lumenveil.parameters()
    assert listed["shape"]["choices"] == ("circle", "ellipse", "polygon", "image")
    assert listed["shape"]["default"] == "circle" and listed["match_radii"]["default"] is True
    assert (listed["radius_x"]["default"], listed["radius_x"]["minimum"], listed["radius_x"]["maximum"]) == (0.03, 0.0, 0.3)
    assert (listed["sides"]["default"], listed["sides"]["minimum"], listed["sides"]["maximum"]) == (6, 3, 20)
    assert (listed["bright_emphasis"]["default"], listed["bright_emphasis"]["maximum"]) == (50.0, 100.0)
    assert listed["centre"]["default"] == (0.5, 0.5) and listed["radius_psf1"]["minimum"] == 0.001
    assert listed["engine"]["default"] == "fast" and "faithful" in listed["engine"]["choices"]
    # radius is Radius X under the name NumPy users reach for first.
    assert listed["radius"]["property"] == "RadiusX" and listed["radius"]["default"] == 0.03
    fx = lumenveil.Effect(radius=0.07)
    fx.set_key("radius", 1.0, 0.09)
    assert (fx.get("radius_x"), fx.get("radius", 1.0), fx.get("radius_y")) == (0.07, 0.09, 0.03)
    signature = inspect.signature(lumenveil.defocus)
    assert list(signature.parameters)[1:] == list(listed)
    assert signature.parameters["radius_x"].default == 0.03
    assert all(name + " : " in lumenveil.defocus.__doc__ for name in listed)


def test_two_effects_on_two_threads_give_the_pictures_of_one_at_a_time(photo, photo16):
    work = [(lumenveil.Effect(shape="polygon", radius_x=0.03), photo16),
            (lumenveil.Effect(engine="faithful", radius_x=0.01), photo[:300, :400])]
    alone = [[fx(image, time=t) for t in (0, 1)] for fx, image in work]
    together = [None, None]

    def render(i):
        fx, image = work[i]
        together[i] = [fx(image, time=t) for t in (0, 1)]
    threads = [threading.Thread(target=render, args=(i,)) for i in (0, 1)]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    for ours, theirs in zip(alone, together):
        assert all(np.array_equal(a, b) for a, b in zip(ours, theirs))


def test_python_threads_run_while_an_effect_renders(photo16):
    # While the render holds no GIL, this thread's loop goes on: some of its
    # steps fall in the middle half of the render.
    fx = lumenveil.Effect(engine="faithful", radius_x=0.05)
    span = []
    worker = threading.Thread(target=lambda: span.extend([time.monotonic(), fx(photo16), time.monotonic()]))
    steps = []
    worker.start()
    while worker.is_alive():
        steps.append(time.monotonic())
        time.sleep(0.001)
    start, end = span[0], span[2]
    assert fx.execute_seconds > 0
    assert any(start + (end - start) / 4 < s < end - (end - start) / 4 for s in steps)
