"""The Conan 2 recipe of jxwem: `conan create packaging/conan` in a checkout."""
import os
import re

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load


class JxwemConan(ConanFile):
    name = "jxwem"
    license = "Apache-2.0"
    description = "File-access module for host kernels, with its SDK and reference host"
    topics = ("files", "records", "encodings")
    package_type = "static-library"  # the module beside it is loaded by path
    settings = "os", "arch", "compiler", "build_type"

    def _checkout(self):
        return os.path.join(self.recipe_folder, "..", "..")

    def set_version(self):
        header = load(self, os.path.join(self._checkout(), "include", "jx", "base.h"))
        self.version = ".".join(re.findall(r"#define JX_VERSION_[A-Z]+ (\d+)u", header))

    def export_sources(self):
        copy(self, "*", self._checkout(), self.export_sources_folder,
             excludes=("build/*", "fuzz/*", "tests/*", ".git/*"))

    def layout(self):
        cmake_layout(self)

    def validate(self):
        if self.settings.os != "Linux":
            raise ConanInvalidConfiguration("jxwem is for Linux")
        if self.settings.get_safe("compiler.cppstd"):
            check_min_cppstd(self, 20)

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["JX_TESTS"] = False
        toolchain.cache_variables["JX_PROGRAM"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        copy(self, "LICENSE", self.source_folder, os.path.join(self.package_folder, "licenses"))
        CMake(self).install()

    def package_info(self):
        # The CMake files of the package itself: they name the module too.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs = [os.path.join("lib", "cmake", "jxwem")]
        self.cpp_info.libs = ["jxhost"]
        self.cpp_info.system_libs = ["stdc++", "pthread", "dl"]
        self.runenv_info.define_path(
            "JXWEM_MODULE", os.path.join(self.package_folder, "lib", "jxwem", "jxwem.so"))
