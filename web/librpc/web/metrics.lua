return function() return { status = 200, headers = { ["Content-Type"] = "text/plain; version=0.0.4; charset=utf-8" }, text = "" } end
