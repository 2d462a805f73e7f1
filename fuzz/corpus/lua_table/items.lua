Items = { { id = 1, name = "sword", tags = { "melee", "iron" }, [true] = 0.5 }, x = -0.0, [2] = "two\0b" }
