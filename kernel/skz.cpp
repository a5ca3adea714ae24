#include "kernel/kernel.hpp"
