# SPDX-License-Identifier: MIT
# fish completion for qps by the name that it has on Debian
complete -c qpsread -w qps
