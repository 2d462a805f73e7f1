Settings = { width = 800, height = 600, title = "Editor", fullscreen = false, scale = 1.5e-3 }
