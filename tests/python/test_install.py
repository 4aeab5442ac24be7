"""`make install` puts a module the system's Python imports from PREFIX
(under DESTDIR when given), and it renders with the effect module installed
beside it."""
import os
import pathlib
import subprocess
import sys

import lumenveil


def test_the_installed_module_imports_and_renders(tmp_path):
    # What make install runs, staged under DESTDIR; cmake without the
    # sanitizer's runtime that the sanitized build preloads for Python. The
    # build tree's manifest is left as a real install left it.
    cmake_environment = {k: v for k, v in os.environ.items() if k != "LD_PRELOAD"}
    manifest = pathlib.Path(os.environ["LUMENVEIL_BUILD_DIR"]) / "install_manifest.txt"
    kept = manifest.read_bytes() if manifest.exists() else None
    try:
        install = subprocess.run([os.environ["CMAKE_COMMAND"], "--install", os.environ["LUMENVEIL_BUILD_DIR"],
                                  "--prefix", "/opt/lv"], capture_output=True, text=True,
                                 env=dict(cmake_environment, DESTDIR=str(tmp_path)), timeout=120)
    finally:
        manifest.unlink(missing_ok=True)
        if kept is not None:
            manifest.write_bytes(kept)
    assert install.returncode == 0, install.stderr
    prefix = tmp_path / "opt" / "lv"
    folder = prefix / "lib" / f"python{sys.version_info.major}.{sys.version_info.minor}" / "dist-packages"
    environment = {k: v for k, v in os.environ.items() if k != "LUMENVEIL_MODULE"}
    environment["PYTHONPATH"] = str(folder)
    script = ("import numpy, lumenveil; print(lumenveil.__file__); print(lumenveil.module_path); "
              "print(lumenveil.defocus(numpy.full((8, 8), 200, numpy.uint8)).max())")
    run = subprocess.run([sys.executable, "-c", script], env=environment, capture_output=True, text=True, cwd=tmp_path)
    assert run.returncode == 0, run.stderr
    extension, module, brightest = run.stdout.split()
    assert extension.startswith(str(folder)) and extension != lumenveil.__file__
    assert os.path.realpath(module) == str(prefix / "lib" / "lumenveil" / "libLumenveilVZ.so")
    # A flat field stays flat under any blur: the effect repeats its edges.
    assert brightest == "200"
