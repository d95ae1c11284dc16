-- luarocks make: builds the library from this folder with CMake and installs it
-- into a tree. Needs libtirpc's development files and pkg-config.
-- tools/package/source_rock.sh makes a source rock, which installs offline.
rockspec_format = "3.0"
package = "librpc"
version = "1.0.0-1"
source = { url = "git+file://.", tag = "v1.0.0" }
description = {
  summary = "Device tables of a switch or optical line terminal, over ONC RPC",
  detailed = [[
    callapi(name, argument) reads and changes the tables that local
    daemons own. With it come records with named fields (librpc.record), the
    description of every table (librpc.schema), reasons for failures
    (librpc.status) and rpcctl, a command line.
  ]],
  license = "MIT",
}
supported_platforms = { "linux" }
dependencies = { "lua >= 5.1, < 5.5" }
external_dependencies = { TIRPC = { library = "tirpc" } }
build = {
  type = "cmake",
  variables = {
    CMAKE_BUILD_TYPE = "Release",
    CMAKE_INSTALL_PREFIX = "$(PREFIX)",
    LIBRPC_TESTS = "OFF",
    LIBRPC_SHELL_FILES = "OFF", -- a rock's own folder is not where a shell looks
    LIBRPC_LUA_INCLUDE_DIR = "$(LUA_INCDIR)",
    LIBRPC_LUA_CMODDIR = "$(LIBDIR)",
    LIBRPC_LUA_MODDIR = "$(LUADIR)",
    CMAKE_INSTALL_BINDIR = "$(BINDIR)",
  },
}
