# The program's output with its two evaluation lines checked against each other.
set -euo pipefail
"$1" <"$2" | awk -f "$(dirname "${BASH_SOURCE[0]}")/eval-lines.awk"
