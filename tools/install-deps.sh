#!/usr/bin/env bash
# Installs the Debian 12 packages the project builds and tests with. Run as root.
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends \
  g++ cmake make binutils \
  libgtest-dev libgmock-dev libbenchmark-dev \
  libsuitesparse-dev libsundials-dev \
  nlohmann-json3-dev libcli11-dev libfmt-dev \
  python3 python3-iapws \
  pybind11-dev python3-dev python3-numpy python3-dask python3-distributed python3-pint \
  python3-matplotlib python3-pytest python3-pandas >/dev/null
