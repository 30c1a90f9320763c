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
  python3 python3-iapws python3-pint python3-pytest >/dev/null
