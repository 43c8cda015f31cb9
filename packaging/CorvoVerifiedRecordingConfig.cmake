# Defines Corvo::CorvoVerifiedRecording.
#
# A host that supplies functions to the library (ConsolePrint, CorvoSettingsDirectory ...) sets its
# target's property ENABLE_EXPORTS besides: only then does the library find them.
include("${CMAKE_CURRENT_LIST_DIR}/CorvoVerifiedRecordingTargets.cmake")
