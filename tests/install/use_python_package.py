# SPDX-License-Identifier: Apache-2.0
"""Sculpts with the installed Python package.

usage: use_python_package.py MESH PREFIX
"""

import re
import sys
from importlib.metadata import version

import trovik

mesh, prefix = sys.argv[1:]
assert version("trovik") == trovik.__version__
with trovik.open(mesh, levels=2) as s:
    # The tool Repeat needs an installed stamp, and a render needs a module of the library.
    s.tool("Repeat", radius=0.1, strength=40)
    s.stroke(surface=[[0.35, 0.2, 0.0], [0.35, 0.2, 0.5]])
    assert s.history[-1].label == "Repeat"
    s.render(f"{prefix}/python.png", width=64, height=48, samples=1)
with open("/proc/self/maps") as maps:
    libraries = set(re.findall(r"/\S*(?:SwiftStroke|libTrovikFramework|trovik/_core|trovik-embree)\S*", maps.read()))
elsewhere = [path for path in libraries if not path.startswith(prefix)]
assert len(libraries) >= 4 and not elsewhere, (libraries, elsewhere)
print("sculpted")
