#!/bin/sh
# nibbo-bridge-marker
exec '@LAUNCHER@' --source cline --event @EVENT@
