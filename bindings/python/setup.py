"""The wheel carries libzel-c, so it is of one platform; it needs no particular Python, since ctypes loads the library."""

from setuptools import setup
from wheel.bdist_wheel import bdist_wheel


class PlatformWheel(bdist_wheel):
    def finalize_options(self):
        super().finalize_options()
        self.root_is_pure = False

    def get_tag(self):
        return "py3", "none", super().get_tag()[2]


setup(cmdclass={"bdist_wheel": PlatformWheel})
