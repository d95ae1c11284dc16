-- Why a request has no answer: its HTTP status, a code, a sentence and, where one is
-- to blame, the field. A new code is a row below, or one of librpc.record's and
-- librpc.status's, for which `statuses` has what is not 500.
local refusals = {}

-- The gateway's own: the status and what it means.
refusals.own = {
  bad_address = { 404, "nothing is at that address" },
  bad_method = { 405, "the address is asked in another way" },
  bad_content_type = { 415, "the body is not declared as application/json" },
  bad_body = { 400, "the body is no JSON, or not what the request takes" },
  too_large = { 413, "the body has more bytes than the limit" },
  too_many = { 400, "more calls in one request than the limit" },
  no_user = { 403, "the web server did not say who asks" },
  bad_user = { 403, "a user's name that the gateway does not take" },
  not_allowed = { 403, "the user may not do that" },
  not_same_origin = { 403, "the request comes from a page of somebody else" },
  bad_token = { 403, "the token is not the user's, or older than a day" },
  changed_meanwhile = { 409, "somebody else changed the row since it was read" },
  row_exists = { 409, "the row that was to be added is there already" },
  bad_configuration = { 500, "the gateway's configuration has mistakes, which the server's log tells" },
  no_names = { 500, "no file of names says which fields are secret" },
  no_token = { 500, "the gateway cannot keep tokens" },
  no_log = { 500, "the change could not be logged, so that it was not made" },
  internal = { 500, "the gateway failed, and the server's log tells where" },
}

-- Of librpc.record's and librpc.status's codes.
local statuses = {
  unknown_api = 404, no_row = 404,
  no_operation = 400, unknown_field = 400, unknown_option = 400, same_field = 400, read_only = 400, bad_type = 400,
  bad_number = 400, out_of_range = 400, bad_mac = 400, bad_hex = 400, bad_list = 400, too_long = 400, separator = 400,
  zero_byte = 400, empty_text = 400, no_key = 400, not_carried = 400, two_sets = 400,
  cut_reply = 502, bad_text = 502, other_row = 502, daemon_status = 502, repeated_row = 502, rejected = 502,
  bad_reply = 502,
  no_portmapper = 503, no_daemon = 503, no_client = 503, refused = 503, interrupted = 503, not_sent = 503,
  timed_out = 504, deadline = 504,
}

-- A refusal, which handlers return in place of an answer. `more` goes into the error.
function refusals.make(code, message, field, more)
  local own = refusals.own[code]
  local refusal = { code = code, status = own and own[1] or statuses[code] or 500, message = message or own[2],
    field = field }
  for name, value in pairs(more or {}) do
    refusal[name] = value
  end
  return nil, refusal
end

return refusals
