#!/usr/bin/env bash
# Builds the host application and opens it on the sample libraries, which it keeps in build/sample.
# Without a display it calculates one formula and saves the window as build/varo-host.png.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

tools/install.sh
cmake --preset release
cmake --build --preset release --target varo-host sample_configuration

host=(
  build/release/apps/host/varo-host --deploy "$PWD/build/sample"
  --prop 弹性模量=206 --prop 截面面积=314 --prop 截面类型=矩形 --prop 许用应力=160
  --prop 环境温度=20 --prop 联结方式=星形
)
if [[ -n ${DISPLAY:-}${WAYLAND_DISPLAY:-} ]]; then
  exec "${host[@]}"
fi

picture=build/varo-host.png
# That platform warns of everything it cannot do.
QT_QPA_PLATFORM=offscreen QT_LOGGING_RULES=default.warning=false "${host[@]}" --screenshot "$picture" \
  --select 'FormulaNode1->DBNode1' --select LvFormulaKey2 --set F=30
echo "There is no display; the window is in $picture"
