# The platform layer in its two halves, each file named without its extension. The build compiles
# the first half into qem_core and the second into qem_gui; the layering check
# (tests/layering.cmake) fails when a file of the first includes Qt or a file of the second, or
# when a file of the folder is in neither.
#
# Below the GUI, no Qt: values and text, files and folders, the clock, the change and lock
# watches, the event guard, memory.
set(qem_platform_core
  change_watch clock dictionary event_guard exceptions folder_item lock_watch memory system text
  text_measurer text_stream variant write_counts)
# The GUI over Qt: the run loop and its timers, the watchers that tell it of changes, windows,
# controls, menus and dialogs, fonts and the measuring of text, the documents folder, a program
# launched.
set(qem_platform_gui
  accessible_interfaces control_font desktop_controls desktop_menu desktop_text_controls
  desktop_ui_control desktop_window documents_folder folder_watcher font_metrics_measurer
  lock_watcher open_file_dialog open_program run_loop window_widget)
